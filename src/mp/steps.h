// The moments between two steps of the protocol, where another thread may come in between. A program of the
// tests holds threads up there; in the library nothing is left of it.
#pragma once

#include <cstdint>

namespace prismo::mp {

enum class Step : uint8_t {
  // A worker's.
  kAwake,             // has reset its event and not looked at the queue
  kJoined,            // is counted in
  kBlockTaken,        // has rows to convert
  kBlockConverted,    // has not reported them
  kLastLeft,          // is the last one counted out; nobody has been told
  kDoneRaised,        // has told the submitter
  kCallbackReturned,  // still keeps the record
  kRecordLetGo,       // has not moved the offer on
  kOfferMoved,
  // A submitter's.
  kQueued,  // has woken nobody
  kWoken,
  kGivenUp,    // the time has passed; the work does not know
  kStatusSet,  // the work knows, and is in the queue
  kRemoved,    // neither in the queue nor on the list
  kListed,
  kReleased,
};

inline constexpr Step kWorkerSteps[] = {
    Step::kAwake,      Step::kJoined,           Step::kBlockTaken,  Step::kBlockConverted, Step::kLastLeft,
    Step::kDoneRaised, Step::kCallbackReturned, Step::kRecordLetGo, Step::kOfferMoved};
inline constexpr Step kSubmitterSteps[] = {Step::kQueued,  Step::kWoken,  Step::kGivenUp, Step::kStatusSet,
                                           Step::kRemoved, Step::kListed, Step::kReleased};

#ifdef PRISMO_HELD_STEPS
void Passing(Step step);
#else
inline void Passing(Step) {}
#endif

}  // namespace prismo::mp
