#include "MeetingLinks.h"

#include <QRegularExpression>
#include <QUrl>

namespace kelvane {

namespace {

struct Service {
    const char* domain;
    // The path must start with this to be a meeting rather than the service's home page.
    const char* pathPrefix;
};

constexpr Service services[] = {
    {"zoom.us", "/j/"},          {"zoom.us", "/my/"},
    {"zoom.us", "/w/"},          {"zoomgov.com", "/j/"},
    {"meet.google.com", "/"},    {"teams.microsoft.com", "/l/meetup-join"},
    {"teams.live.com", "/meet"}, {"webex.com", "/meet"},
    {"webex.com", "/join"},      {"webex.com", "/wbxmjs/"},
    {"meet.jit.si", "/"},        {"whereby.com", "/"},
    {"gotomeeting.com", "/join"}, {"meet.goto.com", "/"},
    {"chime.aws", "/"},          {"bluejeans.com", "/"},
    {"join.skype.com", "/"},     {"app.slack.com", "/huddle/"},
};

bool isMeeting(const QUrl& url)
{
    const QString host = url.host().toLower();
    const QString path = url.path();
    for (const Service& service : services) {
        const QString domain = QString::fromLatin1(service.domain);
        const bool onDomain = host == domain || host.endsWith(u'.' + domain);
        // A bare "/" prefix still needs something after it: the service's front page is no meeting.
        const QString prefix = QString::fromLatin1(service.pathPrefix);
        if (onDomain && path.startsWith(prefix) && path.size() > 1)
            return true;
    }
    return false;
}

QString firstMeetingIn(const QString& text)
{
    // Most events carry no address at all: that is told without the expression.
    if (!text.contains(QLatin1StringView("http"), Qt::CaseInsensitive))
        return {};
    static const QRegularExpression address(QStringLiteral(R"(https?://[^\s<>"'\\]+)"),
                                            QRegularExpression::CaseInsensitiveOption);
    for (auto it = address.globalMatch(text); it.hasNext();) {
        QString candidate = it.next().captured();
        // Punctuation that closes the sentence around an address is not part of it.
        while (!candidate.isEmpty() && QStringLiteral(".,;:!?)]}>").contains(candidate.back()))
            candidate.chop(1);
        const QUrl url(candidate, QUrl::StrictMode);
        if (url.isValid() && isMeeting(url))
            return candidate;
    }
    return {};
}

} // namespace

bool isConferenceProperty(const QString& name)
{
    return name == QLatin1StringView("CONFERENCE") || name == QLatin1StringView("X-GOOGLE-CONFERENCE") ||
           name.startsWith(QLatin1StringView("X-MICROSOFT-"));
}

QString meetingLink(const QString& url, const QString& location, const QString& description)
{
    for (const QString* text : {&url, &location, &description})
        if (QString link = firstMeetingIn(*text); !link.isEmpty())
            return link;
    return {};
}

} // namespace kelvane
