#include "tests/charts/picturecompare.h"

#include <QColor>
#include <QDir>

#include <algorithm>
#include <cstdlib>

QString PictureDifference::text() const
{
    return QStringLiteral("%1 pixels differ, opaque ones by up to %2, others by up to %3; worst at %4, %5")
        .arg(pixels)
        .arg(largestOpaque)
        .arg(largestTranslucent)
        .arg(worst.x())
        .arg(worst.y());
}

PictureDifference comparePictures(const QImage &first, const QImage &second)
{
    const QImage a = first.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const QImage b = second.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    PictureDifference difference;
    if (a.size() != b.size()) {
        difference.pixels = -1;
        difference.largestOpaque = difference.largestTranslucent = 255;
        return difference;
    }
    int worst = 0;
    for (int y = 0; y < a.height(); ++y) {
        const auto *rowA = reinterpret_cast<const QRgb *>(a.constScanLine(y));
        const auto *rowB = reinterpret_cast<const QRgb *>(b.constScanLine(y));
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = rowA[x];
            const QRgb q = rowB[x];
            const int most = std::max({std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)),
                                       std::abs(qBlue(p) - qBlue(q)), std::abs(qAlpha(p) - qAlpha(q))});
            int &largest =
                qAlpha(p) == 255 && qAlpha(q) == 255 ? difference.largestOpaque : difference.largestTranslucent;
            largest = std::max(largest, most);
            difference.pixels += most > 2 ? 1 : 0;
            if (most > worst) {
                worst = most;
                difference.worst = {x, y};
            }
        }
    }
    return difference;
}

QString keepPictures(const QString &name, const QImage &actual, const QImage &expected)
{
    const QDir folder(QDir::tempPath());
    const QString base = folder.filePath(QStringLiteral("vexa-%1").arg(name));
    actual.save(base + QStringLiteral("-actual.png"));
    expected.save(base + QStringLiteral("-expected.png"));
    return base + QStringLiteral("-{actual,expected}.png");
}
