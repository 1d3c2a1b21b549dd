#include "settings/Keys.h"
#include "settings/SettingsStore.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

using namespace kelvane;

namespace {
QJsonObject parse(const QString& text) { return QJsonDocument::fromJson(text.toUtf8()).object(); }

QString withMember(const QJsonObject& base, const QString& name, const QJsonValue& value)
{
    QJsonObject copy = base;
    if (value.isUndefined())
        copy.remove(name);
    else
        copy.insert(name, value);
    return QString::fromUtf8(QJsonDocument(copy).toJson(QJsonDocument::Compact));
}
} // namespace

// The stored text is what other tools and older builds read: member names are the field names,
// enumerations are raw values, sizes are arrays, absent optionals are left out.
TEST(RecordCoding, StoredFormUsesFieldNamesRawValuesAndPlatformShapes)
{
    const QJsonObject general = parse(json::toJsonText(GeneralSettings{}));
    EXPECT_EQ(general.size(), 15);
    EXPECT_TRUE(general.contains("transluscent"));
    EXPECT_EQ(general.value("showInFullscreen").toString(), "notchedScreens");
    EXPECT_EQ(general.value("preferredMediaSource").toString(), "systemWide");
    EXPECT_EQ(general.value("handleSize").toArray(), (QJsonArray{184.0, 8.0}));

    const QJsonObject calendar = parse(json::toJsonText(CalendarLiveActivitySettings{}));
    EXPECT_EQ(calendar.value("appearanceMode").toObject(), (QJsonObject{{"constant", QJsonObject{}}}));

    const QJsonObject tuckle = parse(json::toJsonText(TuckleSettings{}));
    EXPECT_EQ(tuckle.value("size").toObject(),
              (QJsonObject{{"width", QJsonObject{{"value", 11}}}, {"height", QJsonObject{{"value", 2}}}}));
    EXPECT_EQ(tuckle.value("enabledWidgets").toArray(), (QJsonArray{"media", "mirror"}));

    const QJsonObject media = parse(json::toJsonText(MediaLiveActivitySettings{}));
    EXPECT_FALSE(media.contains("customGifURL"));
    EXPECT_EQ(media.value("gifScalingQuality").toString(), "Pixel-perfect");

    const QJsonObject calendarWidget = parse(json::toJsonText(CalendarWidgetSettings{}));
    EXPECT_FALSE(calendarWidget.contains("selectedCalendars"));
    EXPECT_FALSE(calendarWidget.contains("calendarSelectionWasExplicit"));

    EXPECT_EQ(parse(json::toJsonText(LiquidGlassSettings{})).size(), 40);
}

// One bad member spoils the whole record: every field reads its default, not only the bad one.
TEST(RecordCoding, ABadMemberMakesTheWholeRecordFailToDecode)
{
    GeneralSettings changed;
    changed.demoMode = true;
    changed.notchWidthFineTune = 6;
    const QJsonObject good = changed.toJson();

    struct Case {
        const char* what;
        QString text;
    };
    const Case cases[] = {
        {"missing member", withMember(good, "lockKVWhenTyping", QJsonValue::Undefined)},
        {"bool as string", withMember(good, "demoMode", "true")},
        {"double as string", withMember(good, "contentPadding", "12")},
        {"unknown raw value", withMember(good, "preferredMediaSource", "com.example.player")},
        {"enum as number", withMember(good, "showInFullscreen", 1)},
        {"size with three numbers", withMember(good, "handleSize", QJsonArray{1, 2, 3})},
        {"size as object", withMember(good, "handleSize", QJsonObject{{"width", 1}, {"height", 2}})},
        {"null for a non-optional", withMember(good, "transluscent", QJsonValue::Null)},
        {"not JSON", "{\"demoMode\": tru"},
        {"JSON but not an object", "[1,2,3]"},
        {"empty text", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_FALSE(json::fromJsonText<GeneralSettings>(c.text).has_value());
    }
    EXPECT_EQ(json::fromJsonText<GeneralSettings>(withMember(good, "unknownExtra", 1)), changed)
        << "members the record does not know are ignored";
}

TEST(RecordCoding, NestedSetsAndCaseObjectsDecodeStrictly)
{
    QJsonObject live = LiveActivitiesSettings{}.toJson();
    live.insert("enabledLiveActivities", QJsonArray{"tray", "lasers"});
    EXPECT_FALSE(LiveActivitiesSettings::fromJson(live)) << "one unknown activity spoils the set";

    QJsonObject calendar = CalendarLiveActivitySettings{}.toJson();
    for (const QJsonValue& bad : {QJsonValue(QJsonObject{{"periodic", QJsonObject{}}}),
                                  QJsonValue(QJsonObject{{"constant", QJsonObject{}}, {"periodic", QJsonObject{{"interval", 3}}}})}) {
        calendar.insert("appearanceMode", bad);
        EXPECT_FALSE(CalendarLiveActivitySettings::fromJson(calendar));
    }
}

TEST(RecordCoding, OptionalsReadBackAbsentNullOrPresent)
{
    CalendarWidgetSettings widget;
    widget.selectedCalendars = std::vector<QString>{"work", "home"};
    widget.calendarSelectionWasExplicit = false;
    EXPECT_EQ(CalendarWidgetSettings::fromJson(widget.toJson()), widget);

    QJsonObject withNull = CalendarWidgetSettings{}.toJson();
    withNull.insert("selectedCalendars", QJsonValue::Null);
    EXPECT_EQ(CalendarWidgetSettings::fromJson(withNull), CalendarWidgetSettings{});

    MediaLiveActivitySettings media;
    media.customGifURL = QUrl::fromLocalFile("/home/user/My Pictures/cat.gif");
    const auto back = MediaLiveActivitySettings::fromJson(media.toJson());
    ASSERT_TRUE(back);
    EXPECT_EQ(back->customGifURL->toLocalFile(), "/home/user/My Pictures/cat.gif");
}

// Switching the glass to its advanced mode must not change the look.
TEST(RecordCoding, AdvancedGlassDefaultsMatchTheBasicControls)
{
    EXPECT_EQ(LiquidGlassSettings::fromBasic(LiquidBasicSettings{}), LiquidGlassSettings{});
    LiquidBasicSettings frosted;
    frosted.frost = 0.5;
    EXPECT_NE(LiquidGlassSettings::fromBasic(frosted).backdropBlurRadius, 0);
}

namespace {
// Every way of changing a stored value by one step that keeps its shape: a flag flipped, a number
// moved, one element or member of a list or object changed so.
QList<QJsonValue> changesOf(const QJsonValue& value)
{
    QList<QJsonValue> changes;
    if (value.isBool()) {
        changes << QJsonValue(!value.toBool());
    } else if (value.isDouble()) {
        changes << QJsonValue(value.toDouble() + 1);
    } else if (value.isArray()) {
        const QJsonArray array = value.toArray();
        for (qsizetype i = 0; i < array.size(); ++i)
            for (const QJsonValue& changed : changesOf(array[i])) {
                QJsonArray copy = array;
                copy[i] = changed;
                changes << QJsonValue(copy);
            }
    } else if (value.isObject()) {
        const QJsonObject object = value.toObject();
        for (const QString& key : object.keys())
            for (const QJsonValue& changed : changesOf(object[key])) {
                QJsonObject copy = object;
                copy[key] = changed;
                changes << QJsonValue(copy);
            }
    }
    return changes;
}

// A record equals its own stored form read back, and differs from it as soon as any one field
// that can be changed by a step differs: equality looks at the fields, not at nothing.
template <class R>
void expectEveryFieldCompared(const char* name)
{
    const R defaults{};
    const QJsonObject stored = defaults.toJson();
    ASSERT_EQ(R::fromJson(stored), defaults) << name;
    int compared = 0;
    for (const QString& key : stored.keys())
        for (const QJsonValue& changed : changesOf(stored[key])) {
            QJsonObject copy = stored;
            copy[key] = changed;
            const std::optional<R> decoded = R::fromJson(copy);
            if (!decoded)
                continue;
            ++compared;
            EXPECT_FALSE(*decoded == defaults) << name << " " << key.toStdString();
        }
    EXPECT_GT(compared, 0) << name;
}
} // namespace

TEST(RecordCoding, RecordsCompareEveryField)
{
    expectEveryFieldCompared<TuckleGrid::Point>("Point");
    expectEveryFieldCompared<TuckleGrid::Size>("Size");
    expectEveryFieldCompared<GlassRGBA>("GlassRGBA");
    expectEveryFieldCompared<GeneralSettings>("GeneralSettings");
    expectEveryFieldCompared<GestureControlSettings>("GestureControlSettings");
    expectEveryFieldCompared<TuckleSettings>("TuckleSettings");
    expectEveryFieldCompared<LiquidBasicSettings>("LiquidBasicSettings");
    expectEveryFieldCompared<LiquidGlassSettings>("LiquidGlassSettings");
    expectEveryFieldCompared<MediaWidgetSettings>("MediaWidgetSettings");
    expectEveryFieldCompared<CalendarWidgetSettings>("CalendarWidgetSettings");
    expectEveryFieldCompared<ShortcutsWidgetSettings>("ShortcutsWidgetSettings");
    expectEveryFieldCompared<NotesWidgetSettings>("NotesWidgetSettings");
    expectEveryFieldCompared<TodoListWidgetSettings>("TodoListWidgetSettings");
    expectEveryFieldCompared<TimerWidgetSettings>("TimerWidgetSettings");
    expectEveryFieldCompared<LiveActivitiesSettings>("LiveActivitiesSettings");
    expectEveryFieldCompared<MediaLiveActivitySettings>("MediaLiveActivitySettings");
    expectEveryFieldCompared<CalendarLiveActivitySettings>("CalendarLiveActivitySettings");
    expectEveryFieldCompared<BatteryLiveActivitySettings>("BatteryLiveActivitySettings");
}
