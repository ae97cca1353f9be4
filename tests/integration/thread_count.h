// How many threads this process has at the moment.
#pragma once

unsigned threadCount();
