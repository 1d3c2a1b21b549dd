#pragma once

#include "Pipeline.h"

#include "core/Scheduler.h"
#include "notch/KelvaneState.h"
#include "settings/SettingValue.h"

#include <QHash>
#include <QJsonObject>
#include <QObject>
#include <QPointF>
#include <QRectF>
#include <QVariantList>

#include <optional>

namespace kelvane {

class StagingArea;
class StagedDrop;
class Tray;

// Where the pointer is and whether its left button is held, asked of the desktop directly: while
// another application drags, the notch's window receives no pointer events of its own.
class PointerProbe {
public:
    virtual ~PointerProbe() = default;
    // Desktop coordinates.
    virtual QPointF position() const = 0;
    virtual bool leftButtonDown() const = 0;
};

// The desktop area a drag may wander in before it counts as gone: the union of the drop view's
// rectangles seen during the drag.
struct DropHoverBoundary {
    std::optional<QRectF> rect;

    void include(const QRectF& area) { rect = rect ? rect->united(area) : area; }
    // Inside the boundary grown by `margin` on every side.
    bool contains(const QPointF& point, double margin) const
    {
        return rect && rect->adjusted(-margin, -margin, margin, margin).contains(point);
    }
};

// What is dragged onto one notch: opens the notch into its drop area, offers the tray and the
// pipelines that can take the drag, follows the pointer over their targets, turns whatever is
// dropped (files, a web address, text, promised files) into files and hands them to the target,
// then shows the tray or closes. Main thread only.
class DropZone : public QObject {
    Q_OBJECT
    // For the views: each offered pipeline as {id, label, icon}.
    Q_PROPERTY(QVariantList availableActions READ availableActionsForView NOTIFY availableActionsChanged)
    Q_PROPERTY(QString hoveredDropTargetID READ hoveredForView NOTIFY hoveredDropTargetIDChanged)
    Q_PROPERTY(bool hasDroppingCoords READ hasDroppingCoords NOTIFY droppingCoordsChanged)
    Q_PROPERTY(QPointF droppingCoords READ droppingCoordsForView NOTIFY droppingCoordsChanged)
    Q_PROPERTY(bool dropsSuppressed READ dropsSuppressed WRITE setDropsSuppressed NOTIFY dropsSuppressedChanged)
public:
    // The tray's target in the drop area.
    static inline const QString trayTargetID = QStringLiteral("sheld");
    // How far a drag may stray outside the boundary, in points, while the button is held.
    static constexpr double exitMargin = 12;
    static constexpr std::chrono::milliseconds exitPollInterval{50};

    struct Dependencies {
        Scheduler& scheduler;
        SettingsStore& settings;
        KelvaneState& kelvane;
        Tray& tray;
        StagingArea& staging;
        SharingService& sharing;
        PointerProbe& pointer;
    };

    explicit DropZone(Dependencies dependencies, QObject* parent = nullptr);

    // The drop view laid over the notch, each call with its rectangle on the desktop. Entering
    // answers whether the drag is accepted (it is then a copy): only a drag of what the notch can
    // take (files, promised files, a web address, text) opens it.
    bool viewEntered(const QRectF& viewOnDesktop, const Pasteboard& pasteboard);
    // `location` is in the notch's coordinates, measured from its own left edge.
    void viewUpdated(const QRectF& viewOnDesktop, const QPointF& location);
    // A leave reported by the desktop: the drag only counts as gone once the pointer is more than
    // `exitMargin` outside the boundary or the button is up.
    void viewExited(const QRectF& viewOnDesktop);
    bool viewPerformed(const Pasteboard& pasteboard);

    void dropEntered(const Pasteboard& pasteboard);
    void dropUpdated(const QPointF& location);
    void dropExited();
    bool performDrop(const Pasteboard& pasteboard);
    // Leaves the drop area: closed, or showing the tray.
    void finishDragging(bool close);

    // A target reports where it is drawn, in the drop area's coordinates (the notch's).
    Q_INVOKABLE void bindDropAreaCoords(const QString& id, const QRectF& rect);
    Q_INVOKABLE void unbindDropAreaCoords(const QString& id);

    const QList<Pipeline>& availableActions() const { return m_availableActions; }
    const std::optional<QString>& hoveredDropTargetID() const { return m_hoveredDropTargetID; }
    const std::optional<QPointF>& droppingCoords() const { return m_droppingCoords; }
    const QHash<QString, QRectF>& targetsCoords() const { return m_targetsCoords; }
    bool exitTimerActive() const { return m_exitTimer.isActive(); }
    // {offered: [pipeline ids], labels: [as shown], hovered: id or null, suppressed}, for scripts.
    QJsonObject stateJson() const;

    bool dropsSuppressed() const { return m_dropsSuppressed; }
    // Set while the tray's own files are dragged out, so that they do not land in it again.
    void setDropsSuppressed(bool suppressed);

    // What a drop is made into, the first that it carries: its files, else its web address or
    // text (written as a file), else the files it promises.
    struct Dropped {
        QList<QUrl> files;
        std::optional<QString> text;
        QList<std::shared_ptr<FilePromiseReceiver>> promises;
    };
    static Dropped resolve(const Pasteboard& pasteboard);
    // The file that dropped text is written as: its name and contents.
    struct TextFile {
        QString name;
        QByteArray contents;
    };
    static TextFile textFile(const QString& text);
    // Writes dropped text into `folder`: a web address as "shared_url.webloc", other text as
    // "shared_text.txt". Nothing when it cannot be written (the line says why).
    static std::optional<QUrl> writeDroppedText(const QString& text, const QString& folder);
    // The drag carries something the notch can take.
    static bool canTake(const QStringList& types);

Q_SIGNALS:
    void availableActionsChanged();
    void hoveredDropTargetIDChanged();
    void droppingCoordsChanged();
    void dropsSuppressedChanged();

private:
    QVariantList availableActionsForView() const;
    QString hoveredForView() const { return m_hoveredDropTargetID.value_or(QString()); }
    QString labelOf(const Pipeline& pipeline) const;
    bool hasDroppingCoords() const { return m_droppingCoords.has_value(); }
    QPointF droppingCoordsForView() const { return m_droppingCoords.value_or(QPointF()); }
    void setHovered(const std::optional<QString>& id);
    void setAvailableActions(const QList<Pipeline>& actions);
    void pollExit();
    // Files offered from the system temporary folder are staged in the drop's own folder (a hard
    // link, else a copy made beside the notch), where the dragging application cannot delete
    // them when the drag ends; the originals stay where they are. `deliver` gets the staged
    // files, with the other files as they were, in their order.
    static void stageTemporaryFiles(const QList<QUrl>& urls, const std::shared_ptr<StagedDrop>& drop, QObject* context,
                                    std::function<void(const QList<QUrl>&)> deliver);
    static void receivePromises(const QList<std::shared_ptr<FilePromiseReceiver>>& receivers, const QString& folder,
                                std::function<void(const QList<QUrl>&)> deliver);

    Dependencies m_deps;
    SettingValue<GeneralSettings> m_general;
    DropHoverBoundary m_boundary;
    ScheduledTask m_exitTimer;
    QList<Pipeline> m_availableActions;
    QHash<QString, QRectF> m_targetsCoords;
    std::optional<QString> m_hoveredDropTargetID;
    std::optional<QPointF> m_droppingCoords;
    bool m_dropsSuppressed = false;
};

} // namespace kelvane
