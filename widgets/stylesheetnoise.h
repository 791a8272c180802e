#pragma once

#include <QtGlobal>

class QString;

/// While one lives, Qt's warning that the style sheet of a chart's legend button could not be parsed is dropped: that
/// text is fixed as it is, the buttons draw themselves, and Qt would say so for each of them. Every other message goes
/// to the handler that was there before. Make one, in main(), after the handlers of others, and let it live until the
/// end; if somebody else's handler was installed since, it stays.
class StyleSheetNoiseFilter final {
    Q_DISABLE_COPY_MOVE(StyleSheetNoiseFilter)

public:
    StyleSheetNoiseFilter();
    ~StyleSheetNoiseFilter();

    /// Whether this is the message that is dropped.
    static bool isNoise(QtMsgType type, const QString &message);

private:
    bool m_installed = false; // not the second of two filters
};
