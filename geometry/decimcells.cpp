// Cutting an axis into cells.
//   cells.1 edges within the tolerance of a sample's edge are that edge
//   cells.2 steps are 1 or more in single precision and positions sums of them and whole numbers, rounded to that: both are
//           multiples of 2^-23. So are edges and shares, and shares, which are below 2, are exact in single precision
#include "geometry/decimcells.h"

#include <algorithm>
#include <cmath>

#include "geometry/decimate.h"

namespace zetpxl {

namespace {

// Where the next sample of an axis falls.
struct AreaStep {
    bool crosses;
    bool closes;    // the cell is complete with this sample
    double before;  // of a crossing: the share of the cell that ends, and of the one that begins
    double after;
};

// The samples of an axis in order.
struct AreaAxis {
    double edge;  // of the cell at hand
    float index;  // of the next sample
    double share;
    double step;
    bool first;
};

AreaAxis startAxis(float position, float step) {
    const double edge = static_cast<double>(position);
    const auto index = static_cast<float>(std::trunc(edge + kAreaTolerance));
    return {edge, index, 1 - (edge - static_cast<double>(index)), static_cast<double>(step), true};
}

AreaStep nextSample(AreaAxis* axis) {
    axis->index += 1;
    const auto index = static_cast<double>(axis->index);
    AreaStep step{};
    if (index < axis->edge + kAreaTolerance) {
        step.closes = !(index < axis->edge);
    } else {
        step.crosses = true;
        step.closes = !axis->first;
        step.before = axis->edge - std::trunc(axis->edge);
        if (step.closes) axis->share = 1 - step.before;
        step.after = axis->share;
    }
    if (step.crosses || step.closes) axis->edge += axis->step;
    axis->first = false;
    return step;
}

void surveyCells(AreaCells* plan) {
    plan->mostSamples = 0;
    for (std::ptrdiff_t k = 0; k < plan->count; ++k) {
        AreaCell& cell = plan->cells[k];
        // One crossing sample alone begins its cell.
        if (cell.last == 0 && cell.end >= 0) cell = {cell.first, 1, cell.end, kNoCrossing};
        plan->mostSamples = std::max(plan->mostSamples, cell.samples());
    }
}

}  // namespace

void planCells(float position, float step, std::ptrdiff_t nSamples, std::ptrdiff_t most, AreaCells* plan) {
    AreaAxis axis = startAxis(position, step);
    std::ptrdiff_t k = 0;
    const auto open = [plan](std::ptrdiff_t cell, std::ptrdiff_t sample, float share) {
        plan->cells[cell] = {static_cast<std::int32_t>(sample), share >= 0, share, kNoCrossing};
    };
    open(0, 0, kNoCrossing);
    for (std::ptrdiff_t sample = 0; sample < nSamples; ++sample) {
        const AreaStep next = nextSample(&axis);
        if (!next.crosses) ++plan->cells[k].last;
        if (next.crosses && next.closes) plan->cells[k].end = static_cast<float>(next.before);
        if (next.closes && ++k == most) break;
        if (next.crosses) open(k, sample, static_cast<float>(next.after));
        if (!next.crosses && next.closes) open(k, sample + 1, kNoCrossing);
    }
    plan->count = std::min(k + 1, most);
    surveyCells(plan);
}

}  // namespace zetpxl
