#pragma once

#include "ApplicationCatalog.h"

#include <QObject>
#include <QVariantList>

namespace kelvane {

// The user's row of quick apps: chosen applications, in the user's order, kept in the data folder
// as "quick_apps.json". An application that goes away leaves the row with one line.
class QuickAppsManager : public QObject {
    Q_OBJECT
    // Each: id, name, icon and actions (id and name each).
    Q_PROPERTY(QVariantList chosen READ chosen NOTIFY chosenChanged)
public:
    static constexpr const char* fileName = "quick_apps.json";

    QuickAppsManager(ApplicationCatalog& catalog, const QString& dataFolder, QObject* parent = nullptr);
    ~QuickAppsManager() override;

    QStringList chosenIds() const { return m_chosen; }
    QVariantList chosen() const;
    const std::vector<Application>& installed() const { return m_installed; }
    const Application* application(const QString& id) const;

    // The installed applications that match `text` (name, generic name, keywords, description),
    // best first: names that begin with it, then words that do, then the rest; all of them, by
    // name, for an empty text.
    std::vector<const Application*> search(const QString& text) const;
    Q_INVOKABLE QVariantList searchList(const QString& text) const;

    // Each answers the reason, when it could not.
    Q_INVOKABLE QString add(const QString& id);
    Q_INVOKABLE QString remove(const QString& id);
    Q_INVOKABLE void move(int from, int to);
    Q_INVOKABLE QString launch(const QString& id, const QString& action = {}, const QStringList& files = {});

    // Reads the installed applications again and lets go of chosen ones that went.
    void refresh();

Q_SIGNALS:
    void chosenChanged();

private:
    void save();
    static QVariantMap entry(const Application& app);

    ApplicationCatalog& m_catalog;
    QString m_file;
    QStringList m_chosen;
    std::vector<Application> m_installed;
};

} // namespace kelvane
