#pragma once

#include "apps/ApplicationCatalog.h"

namespace kelvane {

// The desktop entries of the XDG data folders, through GIO: names, keywords and actions in the
// user's language, entries that should not be shown left out, and launching as a desktop does
// (with a startup id, so the started window takes the focus). Changes are followed through GIO's
// application monitor on the main loop.
class GioApplicationCatalog final : public ApplicationCatalog {
public:
    GioApplicationCatalog();
    ~GioApplicationCatalog() override;
    GioApplicationCatalog(const GioApplicationCatalog&) = delete;
    GioApplicationCatalog& operator=(const GioApplicationCatalog&) = delete;

    std::vector<Application> installed() override;
    std::optional<QString> launch(const QString& id, const QString& action, const QStringList& files) override;
    void setChangeHandler(std::function<void()> handler) override;

private:
    struct Monitor;
    std::unique_ptr<Monitor> m_monitor;
    std::function<void()> m_changed;
};

} // namespace kelvane
