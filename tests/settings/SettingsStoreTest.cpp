#include "settings/SettingValue.h"
#include "settings/Keys.h"
#include "settings/SettingsStore.h"

#include <QFile>
#include <QJsonDocument>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <memory>

using namespace kelvane;

namespace {
struct Fixture {
    InMemorySettingsDomain domain;
    SettingsStore store{domain};
};

template <class R>
QString text(const R& record)
{
    return json::toJsonText(record);
}
} // namespace

namespace {
// Every key's default as the settings tables give it, transcribed by hand into their stored form
// (tests/data/settings-defaults.json), not taken from the code under test.
QJsonObject transcribedDefaults()
{
    QFile file(QStringLiteral(KELVANE_TEST_DATA) + "/settings-defaults.json");
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return QJsonDocument::fromJson(file.readAll()).object();
}

template <class T>
void expectTranscribedDefault(const SettingsStore& store, const Key<T>& key, const QJsonObject& table, QStringList& checked)
{
    if (!table.contains(key.name()))
        return;
    checked << key.name();
    const QJsonValue expected = table.value(key.name());
    if constexpr (std::is_same_v<T, bool>) {
        EXPECT_EQ(store.value(key), expected.toBool()) << key.name().toStdString();
    } else if constexpr (std::is_same_v<T, QString>) {
        EXPECT_EQ(store.value(key), expected.toString()) << key.name().toStdString();
    } else {
        QJsonObject object = expected.toObject();
        // The default animation is only known as the fourth of the predefined ones.
        if constexpr (std::is_same_v<T, MediaLiveActivitySettings>)
            object.insert("selectedGIF", json::encode(json::allCases<PredefinedGIF>()[3]));
        const std::optional<T> decoded = T::fromJson(object);
        ASSERT_TRUE(decoded) << key.name().toStdString() << ": the transcription does not decode";
        EXPECT_TRUE(store.value(key) == *decoded) << key.name().toStdString() << " reads "
                                                   << json::toJsonText(store.value(key)).toStdString();
    }
}
} // namespace

// A fresh domain reads every key's default, each field of each record as the tables have it; only
// the advanced glass parameters, which the renderer's tuning decides, are not in the tables.
TEST(SettingsStore, FreshDomainReadsEveryDefault)
{
    Fixture f;
    const QJsonObject table = transcribedDefaults();
    QStringList checked;
#define KELVANE_EXPECT_DEFAULT(Type, keyName, initial) expectTranscribedDefault(f.store, Keys::keyName(), table, checked);
    KELVANE_SETTINGS_KEYS(KELVANE_EXPECT_DEFAULT)
#undef KELVANE_EXPECT_DEFAULT
    checked.sort();
    QStringList transcribed = table.keys();
    transcribed.sort();
    EXPECT_EQ(checked, transcribed) << "a transcribed key the store does not have";
    EXPECT_EQ(checked.size(), Keys::registrationDefaults().size() - 1);
}

// Code that reads the domain itself sees the registered defaults too, and registration never hides
// what the user stored.
TEST(SettingsStore, RegistrationServesDirectReadsWithoutOverwriting)
{
    InMemorySettingsDomain domain;
    domain.setValue("rememberLastOpenTab", true);
    SettingsStore store(domain);
    EXPECT_EQ(domain.value("intro"), QVariant(true));
    EXPECT_EQ(json::fromJsonText<TuckleSettings>(domain.value("tuckleSettings").toString()), TuckleSettings{});
    EXPECT_FALSE(domain.contains("intro"));
    EXPECT_TRUE(store.value(Keys::rememberLastOpenTab()));
    SettingsStore again(domain);
    EXPECT_TRUE(again.value(Keys::rememberLastOpenTab()));
}

TEST(SettingsStore, UndecodableValueReadsDefaultAndStaysStoredUntilTheNextWrite)
{
    Fixture f;
    const QString broken = R"({"demoMode":true})";
    f.domain.setValue("generalSettings", broken);
    EXPECT_EQ(f.store.value(Keys::generalSettings()), GeneralSettings{});
    EXPECT_EQ(f.domain.value("generalSettings").toString(), broken);

    f.store.update(Keys::generalSettings(), [](GeneralSettings& g) { g.lockKVWhenTyping = true; });
    GeneralSettings expected;
    expected.lockKVWhenTyping = true;
    EXPECT_EQ(f.store.value(Keys::generalSettings()), expected) << "the update starts from the default";

    struct FlagCase {
        QVariant stored;
        bool expected;
    };
    // Flags come back as text from a text-based domain.
    const FlagCase flags[] = {{"true", true}, {"false", false}, {"0", false}, {"1", true},
                              {"maybe", true}, {QVariant(3.5), true}, {QVariant(false), false}};
    for (const FlagCase& c : flags) {
        f.domain.setValue("intro", c.stored);
        EXPECT_EQ(f.store.value(Keys::intro()), c.expected) << c.stored.toString().toStdString();
    }
    f.domain.setValue("lastVersionNumber", QVariant(12));
    EXPECT_EQ(f.store.value(Keys::lastVersionNumber()), "0") << "a number is not a version string";
}

TEST(SettingsStore, RawValuesAndAssociatedValuesRoundTrip)
{
    Fixture f;
    GeneralSettings general;
    general.preferredMediaSource = MediaSource::spotify;
    f.store.setValue(Keys::generalSettings(), general);
    EXPECT_TRUE(f.domain.value("generalSettings").toString().contains(R"("preferredMediaSource":"com.spotify.client")"));
    EXPECT_EQ(f.store.value(Keys::generalSettings()).preferredMediaSource, MediaSource::spotify);

    f.store.update(Keys::calendarLiveActivitySettings(),
                   [](auto& c) { c.appearanceMode = AppearanceMode::periodic(30); });
    EXPECT_TRUE(f.domain.value("calendarLiveActivitySettings").toString().contains(R"("appearanceMode":{"periodic":{"interval":30}})"));
    const auto mode = f.store.value(Keys::calendarLiveActivitySettings()).appearanceMode;
    EXPECT_EQ(mode.kind, AppearanceMode::Kind::periodic);
    EXPECT_EQ(mode.interval, 30.0);
}

// Subscribers hear every write of their key, whoever wrote it, and nothing else.
TEST(SettingsStore, SubscribersHearEveryWriteFromAnyWriter)
{
    Fixture f;
    auto context = std::make_unique<QObject>();
    std::vector<bool> seen;
    f.store.subscribe<GeneralSettings>(Keys::generalSettings(), context.get(),
                                       [&](const GeneralSettings& g) { seen.push_back(g.demoMode); });

    GeneralSettings demo;
    demo.demoMode = true;
    f.store.setValue(Keys::generalSettings(), demo);                     // through the store
    f.domain.setValue("generalSettings", text(GeneralSettings{}));       // straight into the domain
    f.domain.setValue("generalSettings", "not json");                    // undecodable: the default
    f.store.setValue(Keys::generalSettings(), demo);                     // same value again
    f.store.setValue(Keys::intro(), false);                              // another key
    EXPECT_EQ(seen, (std::vector<bool>{true, false, false, true}));

    context.reset();
    f.store.setValue(Keys::generalSettings(), GeneralSettings{});
    EXPECT_EQ(seen.size(), 4u);

    auto owner = std::make_unique<QObject>();
    SettingValue<GeneralSettings> cached(f.store, Keys::generalSettings(), owner.get());
    f.domain.setValue("generalSettings", text(demo));
    EXPECT_TRUE(cached->demoMode);
}

TEST(SettingsStore, ResetRestoresOnlyItsOwnListOneWriteEach)
{
    Fixture f;
    f.store.setValue(Keys::intro(), false);
    f.store.setValue(Keys::lastVersionNumber(), QString("2.1"));
    f.store.setValue(Keys::preferredOpenMode(), QString("tray"));
    f.store.setValue(Keys::rememberLastOpenTab(), true);
    f.store.update(Keys::generalSettings(), [](auto& r) { r.demoMode = true; });
    f.store.update(Keys::gestureControlSettings(), [](auto& r) { r.allowGestures = false; });
    f.store.update(Keys::liveActivitiesSettings(), [](auto& r) { r.enabled = false; });
    f.store.update(Keys::mediaLiveActivitySettings(), [](auto& r) { r.gifScale = 2; });
    f.store.update(Keys::tuckleSettings(), [](auto& r) { r.showDividers = false; });
    f.store.update(Keys::traySettings(), [](auto& r) { r.size = TuckleGrid::Size::cells(6, 3); });
    f.store.update(Keys::mirrorWidgetSettings(), [](auto& r) { r.size = TuckleGrid::Size::cells(3, 3); });
    f.store.update(Keys::timerWidgetSettings(), [](auto& r) { r.playSound = false; });
    f.store.update(Keys::calendarLiveActivitySettings(), [](auto& r) { r.preEventWindow = 5; });
    f.store.update(Keys::liquidBasicSettings(), [](auto& r) { r.frost = 0.4; });

    QSignalSpy writes(&f.domain, &SettingsDomain::valueChanged);
    f.store.resetDefaults();

    QStringList written;
    for (const auto& args : writes)
        written << args.at(0).toString();
    EXPECT_EQ(written, (QStringList{"intro", "mediaLiveActivitySettings", "liveActivitiesSettings",
                                    "generalSettings", "mediaWidgetSettings", "shortcutsWidgetSettings",
                                    "mirrorWidgetSettings", "gestureControlSettings", "tuckleSettings",
                                    "traySettings", "dropAreaSettings"}));

    EXPECT_TRUE(f.store.value(Keys::intro()));
    EXPECT_FALSE(f.store.value(Keys::generalSettings()).demoMode);
    EXPECT_TRUE(f.store.value(Keys::gestureControlSettings()).allowGestures);
    EXPECT_TRUE(f.store.value(Keys::liveActivitiesSettings()).enabled);
    EXPECT_EQ(f.store.value(Keys::mediaLiveActivitySettings()).gifScale, 1);
    EXPECT_EQ(f.store.value(Keys::traySettings()).size, TuckleGrid::Size::cells(11, 2));
    EXPECT_EQ(f.store.value(Keys::mirrorWidgetSettings()).size, TuckleGrid::Size::cells(2, 2));
    // Kept as the user left them.
    EXPECT_FALSE(f.store.value(Keys::timerWidgetSettings()).playSound);
    EXPECT_EQ(f.store.value(Keys::calendarLiveActivitySettings()).preEventWindow, 5);
    EXPECT_EQ(f.store.value(Keys::liquidBasicSettings()).frost, 0.4);
    EXPECT_EQ(f.store.value(Keys::lastVersionNumber()), "2.1");
    EXPECT_EQ(f.store.value(Keys::preferredOpenMode()), "tray");
    EXPECT_TRUE(f.store.value(Keys::rememberLastOpenTab()));
}

// Scripts and the settings window write by name: only a value that decodes whole for that key is
// written; anything else leaves the store untouched.
TEST(SettingsStore, WritesByNameOnlyWhatDecodes)
{
    InMemorySettingsDomain domain;
    SettingsStore store(domain);
    QJsonObject general = store.jsonValue("generalSettings")->toObject();
    general["demoMode"] = true;
    QJsonObject partial{{"demoMode", true}};
    QJsonObject badEnum = general;
    badEnum["preferredMediaSource"] = "appleMusic";

    using R = SettingsStore::WriteResult;
    const struct {
        const char* key;
        QJsonValue value;
        R result;
    } cases[] = {
        {"generalSettings", partial, R::invalidValue},
        {"generalSettings", badEnum, R::invalidValue},
        {"generalSettings", "true", R::invalidValue},
        {"intro", 1, R::invalidValue},
        {"noSuchKey", true, R::unknownKey},
        {"preferredOpenMode", "tray", R::written},
        {"generalSettings", general, R::written},
    };
    for (const auto& c : cases) {
        QSignalSpy writes(&domain, &SettingsDomain::valueChanged);
        EXPECT_EQ(store.setJsonValue(c.key, c.value), c.result) << c.key;
        EXPECT_EQ(writes.count(), c.result == R::written ? 1 : 0) << c.key;
    }
    EXPECT_TRUE(store.value(Keys::generalSettings()).demoMode);
    EXPECT_EQ(store.jsonValue("preferredOpenMode"), QJsonValue("tray"));
    EXPECT_EQ(store.jsonValue("noSuchKey"), std::nullopt);
    EXPECT_EQ(SettingsStore::keyNames().size(), 26);
}
