#include "ProgressText.h"

#include <QLocale>

namespace tidemark {

namespace {

QString sizeText(std::int64_t bytes)
{
    return QLocale::c().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}

}  // namespace

QString progressText(const UpdateProgress& progress)
{
    const QString received = sizeText(progress.received);
    if (!progress.total)
        return QStringLiteral("%1 downloaded").arg(received);
    return QStringLiteral("%1 of %2 downloaded").arg(received, sizeText(*progress.total));
}

}  // namespace tidemark
