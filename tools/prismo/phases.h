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
  // How much the two sites of each diagonal differ from place to place: a standard deviation in steps of the
  // samples, without what noise adds to it.
  double falling, rising;
  double contrast;   // the standard deviation of the brightness from place to place, in the same steps
  unsigned places;   // that were compared
  double chance;     // an upper bound of the probability of such a difference if no diagonal were special
  Diagonal greener;  // the one whose sites differ less

  // What it takes to be sure.
  bool enough_places;
  bool beyond_chance;
  bool beyond_mismatch;  // of green sites, which are not quite alike on some sensors

  bool Proves() const { return enough_places && beyond_chance && beyond_mismatch; }

  // Of the differences, the percentage on the diagonal that this phase calls red and blue: 50 says nothing.
  double Score(Diagonal green) const;
};

// Of a frame whose samples are one a pixel. Two green sites beside one another see the same light in the same
// colour: however colours change over the scene, they differ by noise alone. Red and blue sites differ by as
// much as the scene is coloured, and by the sensor's response.
PhaseEvidence ExaminePhases(const Frame& frame);

}  // namespace prismo::tool
