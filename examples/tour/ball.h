// A striped ball for the sections that need something that moves.
#pragma once

#include "picture.h"

namespace tour {

// The gray scene with the ball in front of it, its stripe turned by an angle in radians.
support::Picture withBall(const support::Picture& scene, float centreX, float centreY, float radius, float turn);

}  // namespace tour
