#include "QuickAppsManager.h"

#include "core/Log.h"
#include "core/SavedFile.h"

#include <QCollator>
#include <QDir>
#include <QRegularExpression>

#include <algorithm>

namespace kelvane {

QuickAppsManager::QuickAppsManager(ApplicationCatalog& catalog, const QString& dataFolder, QObject* parent)
    : QObject(parent)
    , m_catalog(catalog)
    , m_file(QDir(dataFolder).filePath(QString::fromLatin1(fileName)))
{
    bool broken = false;
    m_chosen = readStringList(m_file, broken, [](const QString& id) { return !id.isEmpty(); }).value_or(QStringList());
    if (broken)
        logLine(u"QuickAppsManager",
                QStringLiteral("The quick apps %1 could not be read (kept as %2).").arg(m_file, keepAside(m_file)));
    m_catalog.setChangeHandler([this] { refresh(); });
    refresh();
}

QuickAppsManager::~QuickAppsManager()
{
    // The catalog may outlive the row: it no longer reports here.
    m_catalog.setChangeHandler({});
}

void QuickAppsManager::refresh()
{
    m_installed = m_catalog.installed();
    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::stable_sort(m_installed.begin(), m_installed.end(),
                     [&](const Application& a, const Application& b) { return collator.compare(a.name, b.name) < 0; });
    // No application at all is a catalog that could not be read, not one whose every entry went.
    QStringList gone;
    for (const QString& id : m_chosen)
        if (!m_installed.empty() && !application(id))
            gone << id;
    for (const QString& id : gone) {
        m_chosen.removeOne(id);
        logLine(u"QuickAppsManager", QStringLiteral("%1 is no longer installed; it left the quick apps.").arg(id));
    }
    if (!gone.isEmpty())
        save();
    Q_EMIT chosenChanged();
}

const Application* QuickAppsManager::application(const QString& id) const
{
    const auto found = std::ranges::find(m_installed, id, &Application::id);
    return found == m_installed.end() ? nullptr : &*found;
}

QVariantMap QuickAppsManager::entry(const Application& app)
{
    QVariantList actions;
    for (const Application::Action& action : app.actions)
        actions.append(QVariantMap{{QStringLiteral("id"), action.id}, {QStringLiteral("name"), action.name}});
    return {{QStringLiteral("id"), app.id},
            {QStringLiteral("name"), app.name},
            {QStringLiteral("genericName"), app.genericName},
            {QStringLiteral("icon"), app.icon},
            {QStringLiteral("actions"), actions}};
}

QVariantList QuickAppsManager::chosen() const
{
    QVariantList list;
    for (const QString& id : m_chosen)
        if (const Application* app = application(id))
            list.append(entry(*app));
    return list;
}

std::vector<const Application*> QuickAppsManager::search(const QString& text) const
{
    const QString wanted = text.trimmed();
    std::vector<std::pair<int, const Application*>> ranked;
    static const QRegularExpression wordStart(QStringLiteral("[\\s\\-_.]+"));
    for (const Application& app : m_installed) {
        int rank = -1;
        if (wanted.isEmpty() || app.name.startsWith(wanted, Qt::CaseInsensitive))
            rank = 0;
        else if (std::ranges::any_of(app.name.split(wordStart, Qt::SkipEmptyParts),
                                     [&](const QString& word) { return word.startsWith(wanted, Qt::CaseInsensitive); }))
            rank = 1;
        else if (app.genericName.contains(wanted, Qt::CaseInsensitive) ||
                 app.name.contains(wanted, Qt::CaseInsensitive) ||
                 std::ranges::any_of(app.keywords,
                                     [&](const QString& word) { return word.startsWith(wanted, Qt::CaseInsensitive); }))
            rank = 2;
        else if (app.comment.contains(wanted, Qt::CaseInsensitive))
            rank = 3;
        if (rank >= 0)
            ranked.emplace_back(rank, &app);
    }
    // Already by name: a stable sort keeps that within each rank.
    std::ranges::stable_sort(ranked, {}, &std::pair<int, const Application*>::first);
    std::vector<const Application*> found;
    for (const auto& [rank, app] : ranked)
        found.push_back(app);
    return found;
}

QVariantList QuickAppsManager::searchList(const QString& text) const
{
    QVariantList list;
    for (const Application* app : search(text)) {
        QVariantMap item = entry(*app);
        item.insert(QStringLiteral("chosen"), m_chosen.contains(app->id));
        list.append(item);
    }
    return list;
}

QString QuickAppsManager::add(const QString& id)
{
    if (!application(id))
        return QStringLiteral("No installed application is called %1.").arg(id);
    if (m_chosen.contains(id))
        return QStringLiteral("%1 is a quick app already.").arg(id);
    m_chosen.append(id);
    save();
    Q_EMIT chosenChanged();
    return {};
}

QString QuickAppsManager::remove(const QString& id)
{
    if (!m_chosen.removeOne(id))
        return QStringLiteral("%1 is not a quick app.").arg(id);
    save();
    Q_EMIT chosenChanged();
    return {};
}

void QuickAppsManager::move(int from, int to)
{
    if (from < 0 || from >= m_chosen.size() || to < 0 || to >= m_chosen.size() || from == to)
        return;
    m_chosen.move(from, to);
    save();
    Q_EMIT chosenChanged();
}

QString QuickAppsManager::launch(const QString& id, const QString& action, const QStringList& files)
{
    const Application* app = application(id);
    if (!app)
        return QStringLiteral("No installed application is called %1.").arg(id);
    if (!action.isEmpty() && std::ranges::find(app->actions, action, &Application::Action::id) == app->actions.end())
        return QStringLiteral("%1 has no action %2.").arg(app->name, action);
    if (auto error = m_catalog.launch(id, action, files)) {
        logLine(u"QuickAppsManager", QStringLiteral("Could not start %1: %2").arg(app->name, *error));
        return *error;
    }
    return {};
}

void QuickAppsManager::save()
{
    if (const auto error = writeStringList(m_file, m_chosen))
        logLine(u"QuickAppsManager", QStringLiteral("The quick apps could not be saved to %1: %2").arg(m_file, *error));
}

} // namespace kelvane
