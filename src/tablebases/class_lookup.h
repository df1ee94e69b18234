#pragma once

#include <array>

#include "tablebases/table_classes.h"

// From the men on the board to a class with a file.

namespace valku {

// White pawns, knights, bishops, rooks and queens, then Black's.
using MaterialCounts = std::array<u8, 2 * tbTypes>;

// The class if White holds the first-named side's men, its negative if Black does, 0 if no such class has a
// file. kpkp is found as its negative whoever is called first.
int classOfMaterial(const MaterialCounts& counts);

// Enters a class that has a file.
void registerMaterial(const TbClass& tbClass);

// Forgets all classes.
void clearMaterial();

}  // namespace valku
