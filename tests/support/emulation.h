// What runs the tests, where that shows.
#pragma once

namespace prismo::test {

#ifdef PRISMO_UNDER_QEMU
inline constexpr bool kUnderQemu = true;
#else
inline constexpr bool kUnderQemu = false;
#endif

}  // namespace prismo::test
