// The settings as another program or a damaged file leaves them: the stored text of any key, and
// the JSON that scripts write to one. Whatever comes in, every key reads as a value that can be
// written back unchanged.

#include "FuzzCheck.h"

#include "settings/SettingsStore.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <fuzzer/FuzzedDataProvider.h>

using namespace kelvane;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider input(data, size);
    static const QStringList names = SettingsStore::keyNames();
    const QString name = names.at(input.ConsumeIntegralInRange<qsizetype>(0, names.size() - 1));
    const bool written = input.ConsumeBool();
    const std::string rest = input.ConsumeRemainingBytesAsString();
    const QByteArray bytes(rest.data(), qsizetype(rest.size()));

    // One store for every input (registering the defaults is most of the cost); each input
    // leaves nothing stored behind it.
    static InMemorySettingsDomain domain;
    static SettingsStore store(domain);
    struct Clear {
        const QString& name;
        ~Clear() { domain.remove(name); }
    } clear{name};
    if (written) {
        // A script's value: any JSON, a bare number or string included.
        const QJsonDocument document = QJsonDocument::fromJson("[" + bytes + "]");
        if (!document.isArray() || document.array().size() != 1)
            return 0;
        const auto before = store.jsonValue(name);
        if (store.setJsonValue(name, document.array().at(0)) != SettingsStore::WriteResult::written) {
            // A refused value writes nothing.
            FUZZ_CHECK(domain.value(name) == Keys::registrationDefaults().value(name));
            FUZZ_CHECK(store.jsonValue(name) == before);
            return 0;
        }
    } else {
        // The file keeps text only: flags, names and records all come back as strings.
        domain.setValue(name, QString::fromUtf8(bytes));
    }
    const auto read = store.jsonValue(name);
    FUZZ_CHECK(read.has_value());
    // What reads back is a value of the key: it is written again as it is and reads the same.
    FUZZ_CHECK(store.setJsonValue(name, *read) == SettingsStore::WriteResult::written);
    FUZZ_CHECK(store.jsonValue(name) == read);
    return 0;
}
