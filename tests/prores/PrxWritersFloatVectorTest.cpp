// The vector writers give the bytes of the scalar form, for each instruction set of this machine, and touch
// nothing beyond the rows and pixels asked for.

#include "prores/PrxWritersFloatVector.h"

#include "prores/PrxWriters.h"

#include "prores/WriterComparison.h"

namespace {

constexpr WriterFormat formats[] = {{prxFormatR4fl, 256, 0}, {prxFormatR4fl, 256, 64}};

TEST(PrxWritersFloatVector, EqualTheScalarFormForEachInstructionSet) {
    CompareWriters(formats, PrxSelectVectorFloatWriter, PrxSelectScalarFloatWriter);
}

TEST(PrxWritersFloatVector, AreTheWritersSelected) {
    ExpectVectorWritersChosen(formats, PrxSelectFloatWriter, PrxSelectVectorFloatWriter);
}

} // namespace
