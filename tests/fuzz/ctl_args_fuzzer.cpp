// kelvanectl's command line: any words either make one call the bus can carry or are refused with
// a reason.

#include "FuzzCheck.h"

#include "ctl/CommandLine.h"

#include <fuzzer/FuzzedDataProvider.h>

using namespace kelvane;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider input(data, size);
    // The words that matter, often enough for the fuzzer to put them together.
    static const char* const words[] = {"state", "open", "close", "hide", "select", "settings", "show-settings",
                                        "activities", "timer", "tray", "media", "quit", "add", "list", "get", "set",
                                        "reset", "pause", "resume", "cancel", "remove", "paste", "pin", "unpin",
                                        "--screen", "tuckle", "", "-"};
    QStringList args;
    const int count = input.ConsumeIntegralInRange(0, 7);
    for (int i = 0; i < count; ++i) {
        if (input.ConsumeBool())
            args << QString::fromLatin1(input.PickValueInArray(words));
        else
            args << QString::fromStdString(input.ConsumeRandomLengthString(32));
    }
    QString error;
    const auto request = ctl::parse(args, error);
    FUZZ_CHECK(request.has_value() != !error.isEmpty());
    if (!request)
        return 0;
    FUZZ_CHECK(!request->method.isEmpty() && request->method.at(0).isUpper());
    // Only strings and lists of strings, which the agent's methods take.
    for (const QVariant& argument : request->arguments)
        FUZZ_CHECK(argument.typeId() == QMetaType::QString || argument.typeId() == QMetaType::QStringList);
    return 0;
}
