#pragma once

#include <QList>
#include <QString>

#include <functional>
#include <optional>
#include <memory>

namespace kelvane {

enum class MediaKey { playPause = 0, previous, next, rewind, fastForward, brightnessUp, brightnessDown, volumeUp, volumeDown, mute };
// Which phase of a press is reported.
enum class KeyPressMode { keyDown, keyUp, keyDownAndUp };

// One event of the keyboard stream as the tap sees it, in the encoding of the notch's original
// platform: ordinary key-downs carry a virtual key code; media keys arrive as system-defined
// events of subtype 8 whose data holds the key code (high 16 bits) and the key state (0xA down,
// 0xB up, in bits 8 to 15; bit 0 set on repeats).
struct KeyEvent {
    enum class Type : int {
        keyDown = 10,
        keyUp = 11,
        systemDefined = 14,
        tapDisabledByTimeout = -2,
        tapDisabledByUserInput = -1,
    };
    static constexpr int mediaKeySubtype = 8;

    Type type = Type::keyDown;
    int keyCode = 0;
    int subtype = 0;
    int data1 = 0;
    unsigned modifiers = 0;

    static KeyEvent media(int code, bool down, bool repeat = false, unsigned modifiers = 0)
    {
        return {Type::systemDefined, 0, mediaKeySubtype, (code << 16) | ((down ? 0xA : 0xB) << 8) | (repeat ? 1 : 0),
                modifiers};
    }
    int mediaKeyCode() const { return (data1 >> 16) & 0xFFFF; }
    bool mediaKeyDown() const { return ((data1 >> 8) & 0xFF) == 0xA; }
    bool operator==(const KeyEvent&) const = default;
};

// The media key of a system-defined key code, and of an ordinary key-down that counts as a
// brightness key (107 and 113 only with the alternate brightness keys).
std::optional<MediaKey> mediaKeyForSystemCode(int code);
std::optional<MediaKey> mediaKeyForKeyDown(int keyCode, bool alternateBrightnessKeys);

// Where the keyboard stream comes from: calls `callback` with every event, on a thread of its
// own, and passes on whatever the callback gives back.
class KeyEventSource {
public:
    virtual ~KeyEventSource() = default;
    // False, with the reason, when the stream cannot be observed.
    virtual bool start(std::function<KeyEvent(const KeyEvent&)> callback, QString* error) = 0;
    virtual void stop() = 0;
    // Turns the stream back on after the system turned it off.
    virtual void enable() = 0;
};

class MediaKeyTapDelegate {
public:
    virtual ~MediaKeyTapDelegate() = default;
    virtual void handle(MediaKey key, unsigned modifiers) = 0;
};

struct MediaKeyTapOptions {
    KeyPressMode keyPressMode = KeyPressMode::keyDown;
    QList<MediaKey> keysToWatch;
    // Whether presses are also taken while the main screen is the built-in display.
    bool observeBuiltIn = true;
    bool alternateBrightnessKeys = false;
    std::function<bool()> mainScreenIsBuiltIn;
};

// Sees the media keys go by and reports the watched ones to its delegate, never swallowing one:
// every event goes back to the stream unchanged, so the system still acts on it.
class MediaKeyTap {
public:
    MediaKeyTap(std::weak_ptr<MediaKeyTapDelegate> delegate, MediaKeyTapOptions options, KeyEventSource& source);
    ~MediaKeyTap();

    // False when the stream cannot be observed (the line says why).
    bool start();
    void stop();
    bool isRunning() const { return m_running; }

    // The tap callback: classifies one event and answers it unchanged.
    KeyEvent handleEvent(const KeyEvent& event);
    // One press or release of a watched key, reported as the press mode says.
    void handle(MediaKey key, bool down, unsigned modifiers);

    const MediaKeyTapOptions& options() const { return m_options; }

private:
    bool takes(MediaKey key) const;

    std::weak_ptr<MediaKeyTapDelegate> m_delegate;
    MediaKeyTapOptions m_options;
    KeyEventSource& m_source;
    bool m_running = false;
};

} // namespace kelvane
