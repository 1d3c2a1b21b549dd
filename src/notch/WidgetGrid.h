#pragma once

#include "NotchGeometry.h"

#include "settings/Keys.h"

#include <QMetaObject>
#include <QRectF>

#include <functional>
#include <map>
#include <set>
#include <vector>

class QObject;

namespace kelvane {
class SettingsStore;
}

namespace kelvane::WidgetGrid {

// A cell of the grid is this many points square.
inline constexpr double cellPoints = NotchGeometry::gridCellPoints;
// The gap between two widgets is at most half a cell, so that every widget keeps a body.
inline constexpr double maxPadding = cellPoints / 2;

// Each widget's size in cells, from its own record.
using Sizes = std::map<TuckleWidget, TuckleGrid::Size>;

struct Placed {
    TuckleWidget widget;
    int column = 0;  // the first cell across
    int columns = 1; // cells across
    int rows = 1;    // cells down
    QRectF frame;    // in points, inside the grid's area
};

struct Layout {
    std::vector<Placed> widgets;
    // Where a line is drawn between two neighbours, in points from the grid's left edge.
    std::vector<double> dividers;
    // Shown widgets that found no room, in their order.
    std::vector<TuckleWidget> leftOut;
    QSizeF size;
};

// Lays the enabled widgets out left to right in their order, each with its own size in cells:
// - a kind that is not built takes no space, and a kind listed twice is shown once;
// - a widget wider than the columns still free is left out, and the ones after it still take
//   their place if they fit;
// - a widget taller than the grid is shown at the grid's height, a shorter one centred in it;
// - the widgets placed are centred as a group; each keeps half the padding on every side;
// - sizes below one cell count as one cell, a grid below one cell as one cell.
Layout layout(const TuckleSettings& tuckle, const Sizes& sizes, const std::set<TuckleWidget>& built);

// Every widget's size from the store.
Sizes sizesFrom(const SettingsStore& store);

// Calls `changed` after a write to any of the eight widget records or to the panel's own record.
// The connections end with `context`.
void subscribeToAllWidgetSettings(const SettingsStore& store, const QObject* context, std::function<void()> changed);

} // namespace kelvane::WidgetGrid
