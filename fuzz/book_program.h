// A program of calls that change a workbook, one call for each choice, on a workbook of any bytes. Between the calls the three values of
// the workbook are as the calls left them: a handle that a failed call has released is given to the next call all the same.
#pragma once

#include "fuzz_support.h"

namespace tolvenar::fuzz {

// Runs choices until they are used up, or `most` calls. The path is that of the file it saves to and opens from.
void RunProgram(Book* book, Choices* choices, int most, const std::string& path);

// A value of a type that a cell can be given, or of one that it can't. To be cleared.
VARIANT ChosenValue(Choices* choices);

}  // namespace tolvenar::fuzz
