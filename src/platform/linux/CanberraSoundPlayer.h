#pragma once

#include "core/SerialQueue.h"
#include "core/SoundPlayer.h"

#include <atomic>

struct ca_context;

namespace kelvane {

// Event sounds of the freedesktop sound theme through libcanberra (PulseAudio, PipeWire or ALSA,
// whichever the session has), played off the main thread. Without audio it plays nothing and
// says so once.
class CanberraSoundPlayer final : public SoundPlayer {
public:
    CanberraSoundPlayer();
    ~CanberraSoundPlayer() override;

    void play(const QString& name) override;
    // The sound theme's event for a sound of the rules: "Glass" is the theme's "complete".
    static QString eventId(const QString& name);

private:
    void playOnQueue(const QString& eventId);
    void reportOnce(const QString& eventId, int error);

    SerialQueue m_queue;
    ca_context* m_context = nullptr;
    std::atomic_bool m_reported{false};
};

} // namespace kelvane
