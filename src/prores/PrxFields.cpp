#include "prores/PrxFields.h"

namespace {

constexpr int32_t bothFields = 1;
constexpr int32_t topField = 3;
constexpr int32_t bottomField = 4;
constexpr int32_t firstCodedField = 5;

int32_t FieldHeight(bool bottom, int32_t height) { return bottom ? height / 2 : (height + 1) / 2; }

} // namespace

int32_t PrxPlanFields(int32_t interlaceMode, int32_t mode, int32_t height, PrxFieldPlans* plans) {
    if (interlaceMode == 0) {
        if (mode >= topField && mode <= firstCodedField) return 0;
        (*plans)[0] = {false, false, false, height};
        return 1;
    }
    if (interlaceMode > 2) return 0;
    const bool bottomFirst = interlaceMode == 2;
    if (mode == bothFields) {
        (*plans)[0] = {false, true, bottomFirst, FieldHeight(bottomFirst, height)};
        (*plans)[1] = {true, true, !bottomFirst, FieldHeight(!bottomFirst, height)};
        return 2;
    }
    const bool bottom = mode == bottomField || (mode != topField && bottomFirst);
    (*plans)[0] = {bottom != bottomFirst, false, bottom, FieldHeight(bottom, height)};
    return 1;
}
