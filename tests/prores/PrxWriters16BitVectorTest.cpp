// The vector writers give the bytes of the scalar form, for each instruction set of this machine, and touch
// nothing beyond the rows and pixels asked for.

#include "prores/PrxWriters16BitVector.h"

#include "prores/PrxWriters.h"

#include "prores/WriterComparison.h"

namespace {

constexpr WriterFormat formats[] = {
    {prxFormatV216, 64, 0}, {prxFormatW216, 64, 0}, {prxFormatY416, 128, 0}, {prxFormatY416, 128, 32}};

TEST(PrxWriters16BitVector, EqualTheScalarFormForEachInstructionSet) {
    CompareWriters(formats, PrxSelectVector16BitWriter, PrxSelectScalar16BitWriter);
}

TEST(PrxWriters16BitVector, AreTheWritersSelected) {
    ExpectVectorWritersChosen(formats, PrxSelect16BitWriter, PrxSelectVector16BitWriter);
}

} // namespace
