#pragma once

#include "notch/NotchWindow.h"

#include <memory>
#include <vector>

namespace kelvane::test {

// What a fake window went through; outlives the window so tests can check a closed one.
struct FakeWindowRecord {
    NotchWindowSetup setup;
    std::function<void()> resignKey;
    bool editingText = false;
    bool contentCleared = false;
    bool closed = false;
    bool shown = false;

    // The window lost keyboard focus.
    void loseFocus() const
    {
        if (resignKey)
            resignKey();
    }
};

class FakeNotchWindow final : public NotchWindow {
public:
    explicit FakeNotchWindow(std::shared_ptr<FakeWindowRecord> record)
        : m_record(std::move(record))
    {
    }
    void setResignKeyHandler(std::function<void()> handler) override { m_record->resignKey = std::move(handler); }
    bool isEditingText() const override { return m_record->editingText; }
    void clearContent() override { m_record->contentCleared = true; }
    void close() override { m_record->closed = true; }
    QRectF frame() const override { return m_record->setup.frame; }
    void orderFront() override { m_record->shown = true; }

private:
    std::shared_ptr<FakeWindowRecord> m_record;
};

class FakeNotchWindowFactory final : public NotchWindowFactory {
public:
    std::unique_ptr<NotchWindow> createWindow(const NotchWindowSetup& setup) override
    {
        auto record = std::make_shared<FakeWindowRecord>();
        record->setup = setup;
        records.push_back(record);
        return std::make_unique<FakeNotchWindow>(record);
    }
    std::vector<std::shared_ptr<FakeWindowRecord>> records;
};

} // namespace kelvane::test
