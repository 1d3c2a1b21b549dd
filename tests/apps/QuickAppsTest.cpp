#include "apps/QuickAppsManager.h"

#include "core/Log.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace kelvane;

namespace {

struct FakeCatalog final : ApplicationCatalog {
    std::vector<Application> apps;
    std::function<void()> changed;
    QStringList launched;
    std::vector<Application> installed() override { return apps; }
    std::optional<QString> launch(const QString& id, const QString& action, const QStringList& files) override
    {
        launched << (id + QLatin1Char(' ') + action + QLatin1Char(' ') + files.join(QLatin1Char(',')));
        return std::nullopt;
    }
    void setChangeHandler(std::function<void()> handler) override { changed = std::move(handler); }
};

Application app(const char* id, const char* name, const char* generic = "", QStringList keywords = {},
                const char* comment = "")
{
    return Application{QString::fromLatin1(id) + QStringLiteral(".desktop"), QString::fromUtf8(name),
                       QString::fromUtf8(generic), QString::fromUtf8(comment), keywords, {}, {}};
}

QStringList ids(const std::vector<const Application*>& found)
{
    QStringList list;
    for (const Application* a : found)
        list << a->id.chopped(8);
    return list;
}

} // namespace

TEST(QuickApps, SearchFindsNamesFirstThenWordsThenWhatTheyAreFor)
{
    FakeCatalog catalog;
    catalog.apps = {app("files", "Files", "File Manager", {"folder", "explorer"}),
                    app("terminal", "GNOME Terminal", "Terminal", {"shell", "prompt", "command"}),
                    app("term", "Terminator"),
                    app("calc", "Calculator", "", {"math"}, "Perform arithmetic and scientific calculations"),
                    app("firefox", "Firefox ESR", "Web Browser", {"internet", "www"})};
    QTemporaryDir data;
    QuickAppsManager apps(catalog, data.path());
    const struct {
        const char* text;
        QStringList found;
    } cases[] = {
        {"", {"calc", "files", "firefox", "terminal", "term"}},
        // Begins the name, begins a word of it, within the name or what it is, or its description.
        {"term", {"term", "terminal"}},
        {"ter", {"term", "terminal"}},
        {"brow", {"firefox"}},
        {"SHELL", {"terminal"}},
        {"scientific", {"calc"}},
        {"folder", {"files"}},
        {"zzz", {}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ids(apps.search(QString::fromLatin1(c.text))), c.found) << c.text;
}

TEST(QuickApps, TheRowIsKeptInOrderAcrossLaunchesAndABrokenFileIsSetAside)
{
    FakeCatalog catalog;
    catalog.apps = {app("a", "Alpha"), app("b", "Beta"), app("c", "Gamma")};
    QTemporaryDir data;
    {
        QuickAppsManager apps(catalog, data.path());
        QSignalSpy changed(&apps, &QuickAppsManager::chosenChanged);
        for (const char* id : {"c.desktop", "a.desktop", "b.desktop"})
            ASSERT_EQ(apps.add(QString::fromLatin1(id)), QString());
        EXPECT_EQ(apps.add(QStringLiteral("a.desktop")), QStringLiteral("a.desktop is a quick app already."));
        EXPECT_EQ(apps.add(QStringLiteral("x.desktop")), QStringLiteral("No installed application is called x.desktop."));
        apps.move(2, 0);
        apps.move(0, 9);
        EXPECT_EQ(apps.remove(QStringLiteral("a.desktop")), QString());
        EXPECT_EQ(apps.remove(QStringLiteral("a.desktop")), QStringLiteral("a.desktop is not a quick app."));
        EXPECT_EQ(changed.size(), 5);
        EXPECT_EQ(apps.launch(QStringLiteral("b.desktop"), QStringLiteral("new"), {}),
                  QStringLiteral("Beta has no action new."));
        EXPECT_EQ(apps.launch(QStringLiteral("b.desktop"), {}, {QStringLiteral("/tmp/x")}), QString());
        EXPECT_EQ(catalog.launched, QStringList{"b.desktop  /tmp/x"});
    }
    QuickAppsManager again(catalog, data.path());
    EXPECT_EQ(again.chosenIds(), QStringList({"b.desktop", "c.desktop"}));
    EXPECT_EQ(again.chosen().first().toMap().value(QStringLiteral("name")), QStringLiteral("Beta"));

    // Nothing at all installed is a catalog that could not be read: the row stays.
    catalog.apps.clear();
    catalog.changed();
    EXPECT_EQ(again.chosenIds(), QStringList({"b.desktop", "c.desktop"}));

    const QString file = data.filePath(QString::fromLatin1(QuickAppsManager::fileName));
    for (const QByteArray& broken : {QByteArray("{\"not\": \"a list\"}"), QByteArray("[\"a.desktop\", 7]"),
                                     QByteArray("\xff\xfe garbage")}) {
        QFile out(file);
        ASSERT_TRUE(out.open(QIODevice::WriteOnly | QIODevice::Truncate));
        out.write(broken);
        out.close();
        LogCapture log;
        QuickAppsManager read(catalog, data.path());
        EXPECT_TRUE(read.chosenIds().isEmpty()) << broken.toStdString();
        ASSERT_EQ(log.lines().size(), 1);
        EXPECT_TRUE(log.lines().first().startsWith(QStringLiteral("[QuickAppsManager] The quick apps")));
        QFile kept(file + QStringLiteral(".broken"));
        ASSERT_TRUE(kept.open(QIODevice::ReadOnly));
        EXPECT_EQ(kept.readAll(), broken);
    }
}
