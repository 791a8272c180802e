#pragma once

#include <QProxyStyle>
#include <QString>

/// The program's look: Qt's Fusion style with a dark palette, and the application's style sheet from ":/darkstyle.qss".
/// A widget's own style sheet wins over it. Install with QApplication::setStyle(new DarkStyle) before the first widget
/// is made; the application then owns it, and wraps it in Qt's style for style sheets, so that QApplication::style()
/// answers another object. Without the sheet the palette alone is used. GUI thread.
class DarkStyle final : public QProxyStyle {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(DarkStyle)

public:
    DarkStyle();
    /// base: what draws, instead of Fusion; owned from here on.
    explicit DarkStyle(QStyle *base);

    /// All colours, disabled and inactive ones too.
    static QPalette darkPalette();

    using QProxyStyle::polish;
    using QProxyStyle::unpolish;
    void polish(QPalette &palette) override;
    /// Sets the application's style sheet.
    void polish(QApplication *application) override;
    /// Puts the former style sheet back, unless somebody has set another one since. If there was none, that is done
    /// when control is back in the event loop.
    void unpolish(QApplication *application) override;
    /// File dialogs and menus get a plain font in the size of the window's tables, and keep it.
    void polish(QWidget *widget) override;

    QPalette standardPalette() const override;
    int styleHint(StyleHint hint, const QStyleOption *option = nullptr, const QWidget *widget = nullptr,
                  QStyleHintReturn *returned = nullptr) const override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                       const QWidget *widget = nullptr) const override;
    void drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                     const QWidget *widget = nullptr) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex *option, QPainter *painter,
                            const QWidget *widget = nullptr) const override;

private:
    QString m_sheet;          // ours; empty while it is not set
    QString m_formerSheet;    // the application's before ours
    bool m_switching = false; // setting a sheet has Qt unpolish and polish the application once more
};
