#pragma once

#include <QString>

namespace kelvane {

// Plays a short system sound by the name the rules give it ("Glass"); the platform maps the name
// onto its own sound theme. Never blocks the caller.
class SoundPlayer {
public:
    virtual ~SoundPlayer() = default;
    virtual void play(const QString& name) = 0;
};

// For tests and for machines without audio: plays nothing.
class SilentSoundPlayer final : public SoundPlayer {
public:
    void play(const QString&) override {}
};

} // namespace kelvane
