// How converters choose between the form on the caller's thread and the form on the pool.
#pragma once

#include <cstdint>

#include "core/settings.h"

namespace prismo {

template <auto kOnCaller, auto kOnPool, class... Arguments>
uint32_t WhenModeIsOne(Arguments... arguments) {
  return PoolWhenModeIsOne() ? kOnPool(arguments...) : kOnCaller(arguments...);
}

template <auto kOnCaller, auto kOnPool, class... Arguments>
uint32_t WhenModeIsNotZero(Arguments... arguments) {
  return PoolWhenModeIsNotZero() ? kOnPool(arguments...) : kOnCaller(arguments...);
}

}  // namespace prismo
