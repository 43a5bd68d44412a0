// Which diagonal of a Bayer frame is green, as far as its samples prove it.
#pragma once

#include "frame.h"

namespace prismo::tool {

enum class Diagonal {
  kFalling,  // from the upper left to the lower right: GR and GB
  kRising,   // from the lower left to the upper right: RG and BG
};

// The diagonal that a Bayer format calls green.
Diagonal GreenDiagonal(const Format& bayer);

struct PhaseEvidence {
  unsigned places;     // that were compared
  unsigned voters;     // of them, those whose diagonals differ by more than green sites of a sensor may
  double for_falling;  // the share of the votes' weight for this diagonal's being green
  double chance;       // an upper bound of the probability of such votes if no diagonal were special

  // What it takes to be sure.
  bool enough_places, beyond_chance, clear_majority;
  bool Proves() const { return enough_places && beyond_chance && clear_majority; }

  Diagonal Green() const { return for_falling >= 0.5 ? Diagonal::kFalling : Diagonal::kRising; }

  // The percentage of the votes' weight for a phase with this green diagonal; 50 says nothing.
  double Score(Diagonal green) const {
    return 100 * (green == Diagonal::kFalling ? for_falling : 1 - for_falling);
  }
};

// Of a frame whose samples are one a pixel. Two green sites beside one another see the same light in the same
// colour: however colours change over the scene, they differ by noise alone. Red and blue sites differ by as
// much as the scene is coloured, and by the sensor's response.
PhaseEvidence ExaminePhases(const Frame& frame);

}  // namespace prismo::tool
