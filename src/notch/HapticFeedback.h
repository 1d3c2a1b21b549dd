#pragma once

namespace kelvane {

// The trackpad's "level change" tap, given as the notch closes.
class HapticFeedback {
public:
    virtual ~HapticFeedback() = default;
    virtual void levelChange() = 0;
};

// Where the hardware has no haptic engine: says so once, then stays quiet.
class NullHapticFeedback final : public HapticFeedback {
public:
    void levelChange() override;

private:
    bool m_reported = false;
};

} // namespace kelvane
