#pragma once

#include "tnv5/scales/scales_family.h"

#include <vector>

namespace tnv5::scales {

// one file each
TFamily familyMassaK();
TFamily familyCas();
TFamily familyBa();
TFamily familyBp();
TFamily familyBh600();
TFamily familyDigi();
TFamily familyAxis();
TFamily familyUpaQ();

/// The families by their number; 0 stands for none.
const std::vector<TFamily>& families();

/// The family of a number, nullptr for 0 and for numbers that are none.
const TFamily* familyOf(int scalesType);

} // namespace tnv5::scales
