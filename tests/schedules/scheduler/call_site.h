// What the seam's functions have in common: each is a call of its own, whose return address tells where in
// the plug-in it was called, and none of their memory is watched, since it stands for the system's.
#pragma once

#define ORVANTIS_SEAM __attribute__((noinline, no_sanitize("thread")))
#define ORVANTIS_SEAM_SITE __builtin_return_address(0)
