#pragma once

#include "notch/WidgetGrid.h"

#include <QObject>
#include <QVariantList>

namespace kelvane {

// The widget panel's layout for the views: every placed widget as { kind, x, y, width, height } in
// points inside the grid, the dividers' x, and the grid's size. Laid out again after any write to
// the panel's record or a widget's.
class WidgetGridModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(QVariantList items READ items NOTIFY layoutChanged)
    Q_PROPERTY(QVariantList dividers READ dividers NOTIFY layoutChanged)
    Q_PROPERTY(double gridWidth READ gridWidth NOTIFY layoutChanged)
    Q_PROPERTY(double gridHeight READ gridHeight NOTIFY layoutChanged)
public:
    // `built`: the widget kinds that have a view.
    WidgetGridModel(const SettingsStore& settings, std::set<TuckleWidget> built, QObject* parent = nullptr);

    const WidgetGrid::Layout& layout() const { return m_layout; }
    QVariantList items() const;
    QVariantList dividers() const;
    double gridWidth() const { return m_layout.size.width(); }
    double gridHeight() const { return m_layout.size.height(); }

Q_SIGNALS:
    void layoutChanged();

private:
    void relayout();

    const SettingsStore& m_settings;
    const std::set<TuckleWidget> m_built;
    WidgetGrid::Layout m_layout;
};

} // namespace kelvane
