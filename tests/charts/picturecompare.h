#pragma once

#include <QImage>
#include <QString>

/// How far two pictures lie apart.
struct PictureDifference {
    int largestOpaque = 0;      ///< largest difference of a channel where both pixels are opaque
    int largestTranslucent = 0; ///< the same for all other pixels
    int pixels = 0;             ///< that differ by more than 2 in some channel
    QPoint worst;
    QString text() const;
};

/// Premultiplied channels of both, pixel by pixel. The sizes have to be equal.
PictureDifference comparePictures(const QImage &a, const QImage &b);

/// Writes both pictures, for looking at after a failure, and returns where.
QString keepPictures(const QString &name, const QImage &actual, const QImage &expected);
