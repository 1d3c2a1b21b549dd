#pragma once

#include <QObject>

class QSocketNotifier;

namespace kelvane {

// Turns the signals that ask a desktop program to end (SIGTERM from the session or `kill`,
// SIGINT from a terminal, SIGHUP when the session or terminal goes away) into a Qt signal on the
// main thread. The handlers stay installed for the rest of the process, so a second signal
// during shutdown is only noted and never cuts the shutdown short.
class QuitSignals : public QObject {
    Q_OBJECT
public:
    explicit QuitSignals(QObject* parent = nullptr);
    ~QuitSignals() override;

    static QString name(int signal);

Q_SIGNALS:
    void received(int signal);

private:
    void readSignal();
    QSocketNotifier* m_notifier = nullptr;
};

} // namespace kelvane
