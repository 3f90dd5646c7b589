#include "prores/PrxAcLane-inl.h"
#include "prores/PrxCoefficientPlaces.h"
#include "prores/PrxDcLane-inl.h"
#include "prores/PrxRunLevelTable.h"
#include "prores/PrxSliceEntropy.h"

#include <hwy/highway.h>

#include <cassert>
#include <cstdint>
#include <utility>

// The components of a slice side by side. Where a code word starts is known only when the one before it has
// been decoded, so that one stream alone leaves most of the processor idle. A lane is one stream; the loops
// advance several lanes in turn. All of a lane has to stay in registers: its functions are inlined, and what
// is rare and long takes and returns its reader by value.

namespace {

/// Reads all lanes side by side until one of them is done.
template <class... Lanes>
HWY_INLINE void DecodeDc(Lanes&... lanes) {
    while (!(lanes.Done() || ...))
        (lanes.Advance(), ...);
}

template <class... Lanes>
HWY_INLINE void DecodeAc(const PrxRunLevelTable& table, Lanes&... lanes) {
    while (!(lanes.Done() || ...)) {
        (lanes.Refill(), ...);
        for (int step = 0; step < PrxAcLane::stepsPerRefill && (lanes.Advance(table) && ...); ++step) {
        }
    }
}

const uint16_t* PlacesOf(const PrxSliceComponent& component, const PrxCoefficientOrder& order) {
    return PrxCoefficientPlaces(order.scan, component.log2BlockCount, component.log2BlockSize);
}

} // namespace

void PrxDecodeSliceComponents(const PrxSliceComponent& luma, const PrxSliceComponent& cb,
                              const PrxSliceComponent& cr, const PrxCoefficientOrder& order) {
    assert(order.coefLimit >= 1 && order.coefLimit <= order.scan.size());
    const uint16_t* lumaPlaces = PlacesOf(luma, order);
    const uint16_t* cbPlaces = PlacesOf(cb, order);
    const uint16_t* crPlaces = PlacesOf(cr, order);
    if (lumaPlaces == nullptr || cbPlaces == nullptr || crPlaces == nullptr) {
        for (const PrxSliceComponent* component : {&luma, &cb, &cr})
            PrxDecodeSliceComponent(*component, order);
        return;
    }

    PrxDcLane lumaDc(luma);
    PrxDcLane cbDc(cb);
    PrxDcLane crDc(cr);
    DecodeDc(lumaDc, cbDc, crDc);
    DecodeDc(lumaDc);
    DecodeDc(cbDc);
    DecodeDc(crDc);

    const PrxRunLevelTable& table = PrxRunLevelTable::Get();
    PrxAcLane a(lumaDc.Reader(), luma, lumaPlaces, order.coefLimit, table);
    PrxAcLane b(cbDc.Reader(), cb, cbPlaces, order.coefLimit, table);
    PrxAcLane c(crDc.Reader(), cr, crPlaces, order.coefLimit, table);
    DecodeAc(table, a, b, c);
    if (a.Done()) std::swap(a, c);
    if (b.Done()) std::swap(b, c);
    DecodeAc(table, a, b);
    if (a.Done()) std::swap(a, b);
    DecodeAc(table, a);
}
