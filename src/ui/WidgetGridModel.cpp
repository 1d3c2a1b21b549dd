#include "WidgetGridModel.h"

#include "core/Log.h"
#include "settings/SettingsStore.h"

namespace kelvane {

WidgetGridModel::WidgetGridModel(const SettingsStore& settings, std::set<TuckleWidget> built, QObject* parent)
    : QObject(parent)
    , m_settings(settings)
    , m_built(std::move(built))
{
    relayout();
    WidgetGrid::subscribeToAllWidgetSettings(settings, this, [this] { relayout(); });
}

void WidgetGridModel::relayout()
{
    WidgetGrid::Layout layout =
        WidgetGrid::layout(m_settings.value(Keys::tuckleSettings()), WidgetGrid::sizesFrom(m_settings), m_built);
    if (!layout.leftOut.empty() && layout.leftOut != m_layout.leftOut) {
        QStringList names;
        for (const TuckleWidget widget : layout.leftOut)
            names << json::rawValue(widget);
        logLine(u"Tuckle", QStringLiteral("No room in the panel for: %1").arg(names.join(QStringLiteral(", "))));
    }
    m_layout = std::move(layout);
    Q_EMIT layoutChanged();
}

QVariantList WidgetGridModel::items() const
{
    QVariantList list;
    for (const WidgetGrid::Placed& placed : m_layout.widgets)
        list.append(QVariantMap{{QStringLiteral("kind"), json::rawValue(placed.widget)},
                                {QStringLiteral("x"), placed.frame.x()},
                                {QStringLiteral("y"), placed.frame.y()},
                                {QStringLiteral("width"), placed.frame.width()},
                                {QStringLiteral("height"), placed.frame.height()}});
    return list;
}

QVariantList WidgetGridModel::dividers() const
{
    QVariantList list;
    for (const double x : m_layout.dividers)
        list.append(x);
    return list;
}

} // namespace kelvane
