#pragma once

#include <QtGlobal>

namespace zeral {

// Every stored template carries the format of the reader that made it, so that templates of
// several kinds of reader live side by side and each is matched the way its kind needs.

// Templates of the studio's simulated reader ("ZSM1"): 256 bytes that no real reader made.
inline constexpr quint32 SIMULATED_FINGERPRINT_FORMAT = 0x5A534D31;
inline constexpr int SIMULATED_FINGERPRINT_SIZE = 256;

// Prints of a USB reader driven through libfprint ("ZLF2"): the library's own serialized
// print, which names the driver and device it came from.
inline constexpr quint32 LIBFPRINT_FINGERPRINT_FORMAT = 0x5A4C4632;

} // namespace zeral
