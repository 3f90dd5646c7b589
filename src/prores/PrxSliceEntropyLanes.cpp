#include "prores/PrxAcLane-inl.h"
#include "prores/PrxCoefficientPlaces.h"
#include "prores/PrxDcLane-inl.h"
#include "prores/PrxRunLevelTable.h"
#include "prores/PrxSliceEntropy.h"

#include <hwy/highway.h>

#include <algorithm>
#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <span>

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

/// The AC lanes of a number of components, and an end.
using AcLanes = std::array<PrxAcLane, prxComponentsAtOnce + 1>;

/// Reads the DC parts, two side by side. Returns the lanes of what follows.
AcLanes DecodeDcParts(std::span<const PrxSliceComponent> components, const PrxCoefficientOrder& order) {
    AcLanes lanes;
    const auto laneOf = [&order](const PrxDcLane& dc, const PrxSliceComponent& component) {
        return PrxAcLane(dc.Reader(), component, PlacesOf(component, order), order.coefLimit);
    };
    size_t i = 0;
    for (; i + 2 <= components.size(); i += 2) {
        PrxDcLane a(components[i]);
        PrxDcLane b(components[i + 1]);
        DecodeDc(a, b);
        DecodeDc(a);
        DecodeDc(b);
        lanes[i] = laneOf(a, components[i]);
        lanes[i + 1] = laneOf(b, components[i + 1]);
    }
    if (i < components.size()) {
        PrxDcLane a(components[i]);
        DecodeDc(a);
        lanes[i] = laneOf(a, components[i]);
    }
    return lanes;
}

/// Reads the AC parts, always two side by side: where one ends, the next one starts.
void DecodeAcParts(const AcLanes& lanes) {
    const PrxRunLevelTable& table = PrxRunLevelTable::Get();
    PrxAcLane a = lanes[0];
    for (size_t next = 1; next < lanes.size(); ++next) {
        PrxAcLane b = lanes[next];
        DecodeAc(table, a, b);
        if (a.Done()) a = b;
    }
    DecodeAc(table, a);
}

} // namespace

void PrxDecodeSliceComponents(std::span<const PrxSliceComponent> components,
                              const PrxCoefficientOrder& order) {
    assert(order.coefLimit >= 1 && order.coefLimit <= order.scan.size());
    assert(components.size() <= prxComponentsAtOnce);
    const auto hasPlaces = [&order](const auto& component) { return PlacesOf(component, order) != nullptr; };
    if (std::ranges::all_of(components, hasPlaces)) {
        DecodeAcParts(DecodeDcParts(components, order));
    } else {
        for (const PrxSliceComponent& component : components)
            PrxDecodeSliceComponent(component, order);
    }
}
