#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>
#include <vector>

namespace kelvane {

// One installed application, as its desktop entry describes it, in the user's language.
struct Application {
    // The entry's id ("org.gnome.Calculator.desktop").
    QString id;
    QString name;
    QString genericName;
    QString comment;
    QStringList keywords;
    // An icon theme name, or an absolute file path.
    QString icon;
    struct Action {
        QString id;
        QString name;
        bool operator==(const Action&) const = default;
    };
    // The entry's own actions ("New Window").
    std::vector<Action> actions;

    bool operator==(const Application&) const = default;
};

// The desktop's installed applications and how they are started.
class ApplicationCatalog {
public:
    virtual ~ApplicationCatalog() = default;
    // Those a person may choose: shown in menus, not hidden, their program present.
    virtual std::vector<Application> installed() = 0;
    // Starts it (or one of its actions), with these files; the reason, when it could not.
    virtual std::optional<QString> launch(const QString& id, const QString& action, const QStringList& files) = 0;
    // Called whenever applications are installed, changed or removed.
    virtual void setChangeHandler(std::function<void()> handler) = 0;
};

} // namespace kelvane
