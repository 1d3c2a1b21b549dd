#pragma once

#include "Pasteboard.h"

#include <QRectF>

#include <functional>

namespace kelvane {

// A target of the drop area beside the tray: what is dropped on it goes to its action instead of
// into the tray. The set is fixed in the program.
struct Pipeline {
    // Target id in the drop area.
    QString id;
    QString label;
    // Freedesktop icon name of the target's picture.
    QString icon;
    // Offered when the drag carries any of these types.
    QStringList allowedFileTypes;
    // Receives the dropped files (staged as files) and the target's rectangle; calls `finished`
    // once it no longer reads the files.
    std::function<void(const QList<QUrl>& files, const QRectF& target, std::function<void()> finished)> action;

    // A pipeline is its fields; the action is the same for the same id.
    bool operator==(const Pipeline& other) const
    {
        return id == other.id && label == other.label && icon == other.icon &&
               allowedFileTypes == other.allowedFileTypes;
    }
    bool accepts(const QStringList& types) const;
};

// Every pipeline in display order, built on first use for this sharing service.
const QList<Pipeline>& allPipelines(SharingService& sharing);

// The pipelines offered for a drag of these types, in display order.
QList<Pipeline> offeredPipelines(const QList<Pipeline>& pipelines, const QStringList& types);

} // namespace kelvane
