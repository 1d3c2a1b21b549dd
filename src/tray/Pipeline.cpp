#include "Pipeline.h"

#include <QCoreApplication>

namespace kelvane {

bool Pipeline::accepts(const QStringList& types) const
{
    return std::any_of(types.begin(), types.end(),
                       [this](const QString& type) { return allowedFileTypes.contains(type); });
}

const QList<Pipeline>& allPipelines(SharingService& sharing)
{
    // The sharing service lives as long as the application; one list serves every notch.
    static SharingService* builtFor = nullptr;
    static QList<Pipeline> pipelines;
    if (builtFor != &sharing) {
        builtFor = &sharing;
        pipelines = {
            Pipeline{
                QStringLiteral("airdrop"),
                QCoreApplication::translate("Pipeline", "AirDrop"),
                QStringLiteral("network-wireless"),
                {PasteboardType::fileURL, PasteboardType::url, PasteboardType::legacyURL,
                 PasteboardType::appleURL, PasteboardType::plainText, PasteboardType::legacyString},
                [&sharing](const QList<QUrl>& files, const QRectF&, std::function<void()> finished) {
                    airDropItems(files, sharing, std::move(finished));
                },
            },
        };
    }
    return pipelines;
}

QList<Pipeline> offeredPipelines(const QList<Pipeline>& pipelines, const QStringList& types)
{
    QList<Pipeline> offered;
    for (const Pipeline& pipeline : pipelines)
        if (pipeline.accepts(types))
            offered.append(pipeline);
    return offered;
}

} // namespace kelvane
