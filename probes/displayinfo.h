#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

/// The mode that a display is in.
struct DisplayMode {
    int width = 0;
    int height = 0;
    int bitsPerPixel = 0;
    int refreshHz = 0;
};

/// "1920x1080 (32bit) 60 Hz"
QString displayModeText(const DisplayMode &mode);

/// One output of a display adapter.
struct DisplayDevice {
    QString adapter; ///< name of the adapter; several outputs may share one
    bool isAttached = false;
    std::optional<DisplayMode> mode; ///< empty: it could not be read
};

/// Names of the adapters that show the desktop, each once, and the modes of all their outputs, both in
/// the order of the devices. An output whose mode is unknown is shown with the one before it.
void describeDisplays(const QVector<DisplayDevice> &devices, QStringList &adapters, QStringList &modes);

/// Display adapters and modes of this machine, as describeDisplays() gives them. On Linux the modes are
/// those of the screens of the application and the adapters are all that there are. Takes some
/// milliseconds; GUI thread.
void getDisplayInfo(QStringList &adapters, QStringList &modes);
