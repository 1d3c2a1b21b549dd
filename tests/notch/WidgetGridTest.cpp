#include "notch/WidgetGrid.h"

#include "settings/SettingsStore.h"

#include <gtest/gtest.h>

using namespace kelvane;
namespace W = kelvane::WidgetGrid;
using enum TuckleWidget;

namespace {
TuckleSettings panel(int columns, int rows, std::vector<TuckleWidget> widgets, double padding = 10,
                     bool dividers = true)
{
    TuckleSettings settings;
    settings.size = TuckleGrid::Size::cells(columns, rows);
    settings.enabledWidgets = std::move(widgets);
    settings.widgetsPadding = padding;
    settings.showDividers = dividers;
    return settings;
}

W::Sizes sizes(std::initializer_list<std::pair<TuckleWidget, std::pair<int, int>>> cells)
{
    W::Sizes result;
    for (const auto& [widget, size] : cells)
        result[widget] = TuckleGrid::Size::cells(size.first, size.second);
    return result;
}

// What a layout shows, as "widget@column+columns x rows".
std::vector<std::string> placed(const W::Layout& layout)
{
    std::vector<std::string> out;
    for (const W::Placed& p : layout.widgets)
        out.push_back(std::to_string(int(p.widget)) + "@" + std::to_string(p.column) + "+" + std::to_string(p.columns) +
                      "x" + std::to_string(p.rows));
    return out;
}

std::string at(TuckleWidget widget, int column, int columns, int rows)
{
    return std::to_string(int(widget)) + "@" + std::to_string(column) + "+" + std::to_string(columns) + "x" +
           std::to_string(rows);
}
} // namespace

TEST(WidgetGrid, PlacesWidgetsInOrderAndLeavesOutWhatDoesNotFit)
{
    const std::set<TuckleWidget> built{media, timer, calendar, notes};
    const W::Sizes defaults = sizes({{media, {5, 2}}, {timer, {6, 3}}, {calendar, {5, 3}}, {notes, {3, 2}}});
    struct Case {
        const char* what;
        TuckleSettings tuckle;
        W::Sizes sizes;
        std::vector<std::string> shown;
        std::vector<TuckleWidget> leftOut;
    };
    const std::vector<Case> cases{
        {"one widget is centred", panel(11, 2, {media, mirror}), defaults, {at(media, 3, 5, 2)}, {}},
        {"two fill the grid, the taller one at the grid's height",
         panel(11, 2, {media, timer}),
         defaults,
         {at(media, 0, 5, 2), at(timer, 5, 6, 2)},
         {}},
        {"the order is the user's",
         panel(11, 2, {timer, media}),
         defaults,
         {at(timer, 0, 6, 2), at(media, 6, 5, 2)},
         {}},
        {"a widget with no room is left out, a later one that fits still shows",
         panel(11, 3, {media, calendar, notes}),
         defaults,
         {at(media, 0, 5, 2), at(calendar, 5, 5, 3)},
         {notes}},
        {"first fit: the smaller one after the one left out",
         panel(9, 2, {media, timer, notes}),
         defaults,
         {at(media, 0, 5, 2), at(notes, 5, 3, 2)},
         {timer}},
        {"wider than the whole grid", panel(4, 2, {timer}), defaults, {}, {timer}},
        {"kinds not built yet take no space, a repeat shows once",
         panel(11, 2, {mirror, media, media, quickApps}),
         defaults,
         {at(media, 3, 5, 2)},
         {}},
        {"sizes below one cell count as one, a grid below one cell as one",
         panel(0, -2, {media, notes}),
         sizes({{media, {0, 0}}, {notes, {-3, 5}}}),
         {at(media, 0, 1, 1)},
         {notes}},
        {"nothing enabled", panel(11, 2, {}), defaults, {}, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const W::Layout layout = W::layout(c.tuckle, c.sizes, built);
        EXPECT_EQ(placed(layout), c.shown);
        EXPECT_EQ(layout.leftOut, c.leftOut);
        EXPECT_EQ(layout.size, QSizeF(std::max(1, c.tuckle.size.width.value) * 50.0,
                                      std::max(1, c.tuckle.size.height.value) * 50.0));
    }
}

TEST(WidgetGrid, FramesKeepThePaddingAndDividersSitBetweenNeighbours)
{
    const std::set<TuckleWidget> built{media, timer, notes};
    const W::Sizes cells = sizes({{media, {5, 2}}, {timer, {4, 2}}, {notes, {2, 1}}});

    W::Layout layout = W::layout(panel(11, 2, {media, notes, timer}, 12), cells, built);
    ASSERT_EQ(layout.widgets.size(), 3u);
    EXPECT_EQ(layout.widgets[0].frame, QRectF(6, 6, 238, 88));
    // A shorter widget is centred in the grid's height.
    EXPECT_EQ(layout.widgets[1].frame, QRectF(256, 31, 88, 38));
    EXPECT_EQ(layout.widgets[2].frame, QRectF(356, 6, 188, 88));
    EXPECT_EQ(layout.dividers, (std::vector<double>{250, 350}));

    layout = W::layout(panel(11, 2, {media, notes, timer}, 12, false), cells, built);
    EXPECT_TRUE(layout.dividers.empty());

    // Padding past half a cell would leave nothing to draw; a negative one is none.
    layout = W::layout(panel(11, 2, {notes}, 400), cells, built);
    EXPECT_EQ(layout.widgets[0].frame, QRectF(4 * 50 + 12.5, 25 + 12.5, 75, 25));
    layout = W::layout(panel(11, 2, {notes}, -8), cells, built);
    EXPECT_EQ(layout.widgets[0].frame, QRectF(200, 25, 100, 50));
}

TEST(WidgetGrid, AWriteToAnyWidgetRecordOrThePanelIsHeard)
{
    InMemorySettingsDomain domain;
    SettingsStore store(domain);
    QObject context;
    int heard = 0;
    W::subscribeToAllWidgetSettings(store, &context, [&] { ++heard; });

    store.update(Keys::timerWidgetSettings(), [](auto& r) { r.size = TuckleGrid::Size::cells(3, 2); });
    store.update(Keys::calendarWidgetSettings(), [](auto& r) { r.size = TuckleGrid::Size::cells(4, 2); });
    store.update(Keys::tuckleSettings(), [](auto& r) { r.enabledWidgets = {timer, calendar}; });
    store.setValue(Keys::rememberLastOpenTab(), true);
    EXPECT_EQ(heard, 3);
    EXPECT_EQ(W::layout(store.value(Keys::tuckleSettings()), W::sizesFrom(store), {timer, calendar}).widgets.size(),
              2u);
    EXPECT_EQ(W::sizesFrom(store).at(timer), TuckleGrid::Size::cells(3, 2));
}
