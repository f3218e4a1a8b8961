#pragma once

#include <QtGlobal>

namespace zeral {

// Templates of the studio's simulated reader ("ZSM1"): 256 bytes that no real reader made.
inline constexpr quint32 SIMULATED_FINGERPRINT_FORMAT = 0x5A534D31;
inline constexpr int SIMULATED_FINGERPRINT_SIZE = 256;

} // namespace zeral
