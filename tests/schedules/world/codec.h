// The codec library's functions for a clip whose frames hold their own number. A session that two threads use
// without order is found by the watch over races.
#pragma once

namespace schedules::world {

/// Sessions that are open. Zero when all went well.
int codecSessions() noexcept;
void beginCodec() noexcept;

}  // namespace schedules::world
