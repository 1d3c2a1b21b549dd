#include "WidgetGrid.h"

#include "settings/SettingsStore.h"

#include <algorithm>

namespace kelvane::WidgetGrid {

Layout layout(const TuckleSettings& tuckle, const Sizes& sizes, const std::set<TuckleWidget>& built)
{
    const int gridColumns = std::max(1, tuckle.size.width.value);
    const int gridRows = std::max(1, tuckle.size.height.value);
    const double padding = std::clamp(tuckle.widgetsPadding, 0.0, maxPadding);

    Layout result;
    result.size = QSizeF(gridColumns * cellPoints, gridRows * cellPoints);
    std::set<TuckleWidget> seen;
    int used = 0;
    for (const TuckleWidget widget : tuckle.enabledWidgets) {
        if (!built.count(widget) || !seen.insert(widget).second)
            continue;
        const auto size = sizes.find(widget);
        const int columns = size == sizes.end() ? 1 : std::max(1, size->second.width.value);
        const int rows = size == sizes.end() ? 1 : std::clamp(size->second.height.value, 1, gridRows);
        if (columns > gridColumns - used) {
            result.leftOut.push_back(widget);
            continue;
        }
        result.widgets.push_back({widget, used, columns, rows, {}});
        used += columns;
    }

    const int offset = (gridColumns - used) / 2;
    for (std::size_t i = 0; i < result.widgets.size(); ++i) {
        Placed& placed = result.widgets[i];
        placed.column += offset;
        const double top = (gridRows - placed.rows) * cellPoints / 2;
        placed.frame = QRectF(placed.column * cellPoints + padding / 2, top + padding / 2,
                              placed.columns * cellPoints - padding, placed.rows * cellPoints - padding);
        if (i > 0 && tuckle.showDividers)
            result.dividers.push_back(placed.column * cellPoints);
    }
    return result;
}

Sizes sizesFrom(const SettingsStore& store)
{
    return {
        {TuckleWidget::calendar, store.value(Keys::calendarWidgetSettings()).size},
        {TuckleWidget::media, store.value(Keys::mediaWidgetSettings()).size},
        {TuckleWidget::shortcuts, store.value(Keys::shortcutsWidgetSettings()).size},
        {TuckleWidget::mirror, store.value(Keys::mirrorWidgetSettings()).size},
        {TuckleWidget::notes, store.value(Keys::notesWidgetSettings()).size},
        {TuckleWidget::quickApps, store.value(Keys::quickAppsWidgetSettings()).size},
        {TuckleWidget::todoList, store.value(Keys::todoListWidgetSettings()).size},
        {TuckleWidget::timer, store.value(Keys::timerWidgetSettings()).size},
    };
}

void subscribeToAllWidgetSettings(const SettingsStore& store, const QObject* context, std::function<void()> changed)
{
    const auto follow = [&](const auto& key) {
        using T = typename std::decay_t<decltype(key)>::ValueType;
        store.subscribe<T>(key, context, [changed](const T&) { changed(); });
    };
    follow(Keys::tuckleSettings());
    follow(Keys::calendarWidgetSettings());
    follow(Keys::mediaWidgetSettings());
    follow(Keys::shortcutsWidgetSettings());
    follow(Keys::mirrorWidgetSettings());
    follow(Keys::notesWidgetSettings());
    follow(Keys::quickAppsWidgetSettings());
    follow(Keys::todoListWidgetSettings());
    follow(Keys::timerWidgetSettings());
}

} // namespace kelvane::WidgetGrid
