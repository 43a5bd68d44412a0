// Sleeping on a word of memory: what events and locks are made of.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

namespace prismo::platform {

inline constexpr std::chrono::nanoseconds kNoLimit = std::chrono::nanoseconds::max();

// Sleeps while the word has this value, at most for the given time. May return for no reason.
void WaitWhile(const std::atomic<uint32_t>& word, uint32_t value, std::chrono::nanoseconds at_most) noexcept;

void WakeOne(const std::atomic<uint32_t>& word) noexcept;
void WakeAll(const std::atomic<uint32_t>& word) noexcept;

// Whether it makes sense to look again and again for what another thread is about to do.
bool CanSpin() noexcept;

}  // namespace prismo::platform
