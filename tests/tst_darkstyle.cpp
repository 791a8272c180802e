#include "mainwindow/customsourcebutton.h"
#include "tests/support/testbase.h"
#include "widgets/darkstyle.h"
#include "widgets/stylesheetnoise.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPointer>
#include <QProxyStyle>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QScrollBar>
#include <QSlider>
#include <QSpinBox>
#include <QStyleFactory>
#include <QTabBar>
#include <QTemporaryDir>
#include <QTextEdit>
#include <QToolButton>
#include <QToolTip>
#include <QtTest>

#include <cmath>
#include <memory>

namespace {

/// Relative luminance, 0 (black) to 1 (white), of an opaque sRGB colour.
double luminance(const QColor &color)
{
    const auto linear = [](double value) {
        return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

/// Contrast ratio, 1 to 21.
double contrast(const QColor &one, const QColor &other)
{
    const double a = luminance(one);
    const double b = luminance(other);
    return (qMax(a, b) + 0.05) / (qMin(a, b) + 0.05);
}

QString sheetOfResource()
{
    QFile file(QStringLiteral(":/darkstyle.qss"));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// How many pixels of two pictures of the same size differ, -1 if the sizes do.
int differingPixels(const QImage &one, const QImage &other)
{
    if (one.size() != other.size())
        return -1;
    int count = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x)
            count += one.pixel(x, y) != other.pixel(x, y) ? 1 : 0;
    }
    return count;
}

QImage picture(QWidget &widget)
{
    return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

struct PolishCounts {
    int application = 0;
    int applicationBack = 0;
    int widget = 0;
};

/// Counts what reaches the style below ours.
class CountingStyle final : public QProxyStyle {
public:
    explicit CountingStyle(PolishCounts *counts) : QProxyStyle(QStringLiteral("Fusion")), m_counts(counts) {}
    using QProxyStyle::polish;
    using QProxyStyle::unpolish;
    void polish(QApplication *application) override
    {
        ++m_counts->application;
        QProxyStyle::polish(application);
    }
    void unpolish(QApplication *application) override
    {
        ++m_counts->applicationBack;
        QProxyStyle::unpolish(application);
    }
    void polish(QWidget *widget) override
    {
        if (widget->objectName() == QLatin1String("counted"))
            ++m_counts->widget;
        QProxyStyle::polish(widget);
    }

private:
    PolishCounts *m_counts;
};

/// The state that a program starts with, whatever the test before has left.
void setPlainStyle()
{
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QCoreApplication::processEvents();
    qApp->setStyleSheet(QString());
}

QStringList messages;

void keepMessage(QtMsgType, const QMessageLogContext &, const QString &message)
{
    messages.append(message);
}

/// Installs a handler, and the former one at the end of the scope.
class HandlerScope final {
    Q_DISABLE_COPY_MOVE(HandlerScope)

public:
    explicit HandlerScope(QtMessageHandler handler) : m_former(qInstallMessageHandler(handler)) { messages.clear(); }
    ~HandlerScope() { qInstallMessageHandler(m_former); }

private:
    QtMessageHandler m_former;
};

} // namespace

// The macros may not stand inside of a namespace.
static void takeSheetAway()
{
    Q_CLEANUP_RESOURCE(style);
}

static void bringSheetBack()
{
    Q_INIT_RESOURCE(style);
}

class TestDarkStyle final : public TestBase {
    Q_OBJECT

private slots:
    void applicationGetsPaletteAndSheet();
    void sheetGoesWithTheStyle();
    void formerSheetComesBack();
    void sheetSetLaterStays();
    void installedTwice();
    void nothingIsPolishedTwice();
    void existingWidgetsFollow();
    void everyRuleOfTheSheetIsUnderstood();
    void selectorsAreByTypeAndFew();
    void textContrast_data();
    void textContrast();
    void disabledTextIsDifferent();
    void ownSheetOfAWidgetWins();
    void ownIndicatorOfACheckBoxWins();
    void focusIsSeen_data();
    void focusIsSeen();
    void focusOfAPictureIsSeenByKeysOnly();
    void disabledIsSeen_data();
    void disabledIsSeen();
    void plainFont();
    void dialogButtonsHaveNoIcons();
    void withoutTheSheet();
    void checkStatesAreSeen();
    void noiseOfLegendButtonsIsDropped();
    void otherMessagesPass_data();
    void otherMessagesPass();
    void realButtonIsSilenced();
    void filtersInEachOther();
    void laterHandlerStays();
};

void TestDarkStyle::applicationGetsPaletteAndSheet()
{
    setPlainStyle();
    QApplication::setStyle(new DarkStyle);
    QVERIFY(!sheetOfResource().isEmpty());
    QCOMPARE(qApp->styleSheet(), sheetOfResource());
    const QPalette palette = QApplication::palette();
    QCOMPARE(palette.color(QPalette::Window), QColor(0x20, 0x20, 0x20));
    QCOMPARE(palette.color(QPalette::Base), QColor(0x15, 0x15, 0x15));
    QCOMPARE(palette.color(QPalette::Highlight), QColor(0x15, 0xcf, 0xbb));
    QCOMPARE(palette.color(QPalette::WindowText), QColor(Qt::white));
    QCOMPARE(QToolTip::palette().color(QPalette::ToolTipText), QColor(Qt::white));
    QLabel label;
    label.ensurePolished();
    QCOMPARE(label.palette().color(QPalette::WindowText), QColor(Qt::white));
}

void TestDarkStyle::sheetGoesWithTheStyle()
{
    setPlainStyle();
    const QPointer<DarkStyle> style(new DarkStyle);
    QApplication::setStyle(style);
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QTRY_VERIFY(qApp->styleSheet().isEmpty());
    QTRY_VERIFY2(!style, "the application has deleted its former style");
    QVERIFY(QApplication::palette().color(QPalette::Window) != QColor(0x20, 0x20, 0x20));
    QCOMPARE(QApplication::style()->objectName().toLower(), QStringLiteral("fusion"));
}

void TestDarkStyle::formerSheetComesBack()
{
    setPlainStyle();
    const QString former = QStringLiteral("QLabel{color:red}");
    qApp->setStyleSheet(former);
    QApplication::setStyle(new DarkStyle);
    QCOMPARE(qApp->styleSheet(), sheetOfResource());
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QCOMPARE(qApp->styleSheet(), former);
}

void TestDarkStyle::sheetSetLaterStays()
{
    setPlainStyle();
    QApplication::setStyle(new DarkStyle);
    const QString later = QStringLiteral("QLabel{color:red}");
    qApp->setStyleSheet(later);
    QCOMPARE(qApp->styleSheet(), later);
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QCOMPARE(qApp->styleSheet(), later);
}

void TestDarkStyle::installedTwice()
{
    setPlainStyle();
    QApplication::setStyle(new DarkStyle);
    QApplication::setStyle(new DarkStyle);
    QCOMPARE(qApp->styleSheet(), sheetOfResource());
    QCOMPARE(QApplication::palette().color(QPalette::Window), QColor(0x20, 0x20, 0x20));
    QCoreApplication::processEvents(); // what the first one has left to be done must not hit the second
    QCOMPARE(qApp->styleSheet(), sheetOfResource());
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QTRY_VERIFY(qApp->styleSheet().isEmpty());
}

void TestDarkStyle::nothingIsPolishedTwice()
{
    setPlainStyle();
    PolishCounts counts;
    QApplication::setStyle(new DarkStyle(new CountingStyle(&counts)));
    QCOMPARE(counts.application, 1);
    QCOMPARE(counts.applicationBack, 0);
    QPushButton button;
    button.setObjectName(QStringLiteral("counted"));
    button.ensurePolished();
    QCOMPARE(counts.widget, 1);
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QCOMPARE(counts.application, 1);
    QCOMPARE(counts.applicationBack, 1);
}

void TestDarkStyle::existingWidgetsFollow()
{
    setPlainStyle();
    QLineEdit line(QStringLiteral("text"));
    line.resize(120, 30);
    line.ensurePolished();
    QApplication::setStyle(new DarkStyle);
    QCOMPARE(picture(line).pixelColor(60, 2), QColor(0x15, 0x15, 0x15));
}

void TestDarkStyle::everyRuleOfTheSheetIsUnderstood()
{
    QApplication::setStyle(new DarkStyle); // unexpected warnings, such as of a text that does not parse, fail the test
    QWidget window;
    auto *line = new QLineEdit(&window);
    line->setGeometry(0, 0, 100, 30);
    auto *bar = new QScrollBar(Qt::Vertical, &window);
    bar->setGeometry(0, 30, bar->sizeHint().width(), 100);
    window.resize(100, 200);
    QCOMPARE(bar->sizeHint().width(), 10);
    const QImage drawn = picture(window);
    QCOMPARE(drawn.pixelColor(50, 0), QColor(0x77, 0x77, 0x77));
    QCOMPARE(drawn.pixelColor(5, 40), QColor(0x4a, 0x4a, 0x4a));
}

void TestDarkStyle::selectorsAreByTypeAndFew()
{
    DarkStyle style;
    style.polish(qApp); // brings the resource in
    style.unpolish(qApp);
    QString sheet = sheetOfResource();
    sheet.remove(QRegularExpression(QStringLiteral("/\\*.*?\\*/"), QRegularExpression::DotMatchesEverythingOption));
    sheet.remove(QRegularExpression(QStringLiteral("\\{[^}]*\\}")));
    const QStringList selectors = sheet.split(QRegularExpression(QStringLiteral("[,\\s]+")), Qt::SkipEmptyParts);
    QVERIFY(!selectors.isEmpty());
    QVERIFY2(selectors.size() <= 20, qPrintable(QString::number(selectors.size())));
    // The window's own sheets count on these as they are.
    const QRegularExpression allowed(QStringLiteral("^(QToolTip|QLineEdit|QScrollBar)(::?[a-z-]+)*$"));
    for (const QString &selector : selectors)
        QVERIFY2(allowed.match(selector).hasMatch(), qPrintable(selector));
}

void TestDarkStyle::textContrast_data()
{
    QTest::addColumn<QPalette::ColorRole>("text");
    QTest::addColumn<QPalette::ColorRole>("ground");
    QTest::newRow("text on a window") << QPalette::WindowText << QPalette::Window;
    QTest::newRow("text in a field") << QPalette::Text << QPalette::Base;
    QTest::newRow("text in every other row") << QPalette::Text << QPalette::AlternateBase;
    QTest::newRow("text of a button") << QPalette::ButtonText << QPalette::Button;
    QTest::newRow("tool tip") << QPalette::ToolTipText << QPalette::ToolTipBase;
    QTest::newRow("selected text") << QPalette::HighlightedText << QPalette::Highlight;
    QTest::newRow("link on a window") << QPalette::Link << QPalette::Window;
    QTest::newRow("visited link on a window") << QPalette::LinkVisited << QPalette::Window;
    QTest::newRow("link in a field") << QPalette::Link << QPalette::Base;
    QTest::newRow("placeholder") << QPalette::PlaceholderText << QPalette::Base;
    QTest::newRow("bright text on a button") << QPalette::BrightText << QPalette::Button;
}

void TestDarkStyle::textContrast()
{
    QFETCH(QPalette::ColorRole, text);
    QFETCH(QPalette::ColorRole, ground);
    const QPalette palette = DarkStyle::darkPalette();
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
        const double ratio = contrast(palette.color(group, text), palette.color(group, ground));
        QVERIFY2(ratio >= 4.5, qPrintable(QString::number(ratio)));
    }
}

void TestDarkStyle::disabledTextIsDifferent()
{
    const QPalette palette = DarkStyle::darkPalette();
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        const QColor enabled = palette.color(QPalette::Active, role);
        const QColor disabled = palette.color(QPalette::Disabled, role);
        QVERIFY(contrast(enabled, disabled) >= 3.0);
        QVERIFY(contrast(disabled, palette.color(QPalette::Disabled, QPalette::Window)) >= 2.0); // still to be read
    }
}

void TestDarkStyle::ownSheetOfAWidgetWins()
{
    QApplication::setStyle(new DarkStyle);
    QLineEdit line;
    line.setStyleSheet(
        QStringLiteral("QLineEdit{background-color:#ff0000;border:2px solid #00ff00;border-radius:0px;}"));
    line.resize(120, 30);
    const QImage drawn = picture(line);
    QCOMPARE(drawn.pixelColor(60, 1), QColor(0, 255, 0));
    QCOMPARE(drawn.pixelColor(60, 4), QColor(255, 0, 0));
}

void TestDarkStyle::ownIndicatorOfACheckBoxWins()
{
    QApplication::setStyle(new DarkStyle);
    QCheckBox check;
    check.setStyleSheet(QStringLiteral("QCheckBox::indicator{width:12px;height:12px;background-color:#ff0000;}"));
    check.resize(check.sizeHint());
    QCOMPARE(check.style()->pixelMetric(QStyle::PM_IndicatorWidth, nullptr, &check), 12);
    QCOMPARE(picture(check).pixelColor(6, check.height() / 2), QColor(255, 0, 0));
}

using WidgetMaker = QWidget *(*)();
Q_DECLARE_METATYPE(WidgetMaker)

void TestDarkStyle::focusIsSeen_data()
{
    QTest::addColumn<WidgetMaker>("make");
    QTest::newRow("push button") << WidgetMaker([]() -> QWidget * { return new QPushButton(QStringLiteral("Push")); });
    QTest::newRow("tool button") << WidgetMaker([]() -> QWidget * {
        auto *button = new QToolButton;
        button->setText(QStringLiteral("Tool"));
        return button;
    });
    QTest::newRow("check box") << WidgetMaker([]() -> QWidget * { return new QCheckBox(QStringLiteral("Check")); });
    QTest::newRow("radio button") << WidgetMaker(
        []() -> QWidget * { return new QRadioButton(QStringLiteral("Radio")); });
    QTest::newRow("combo box") << WidgetMaker([]() -> QWidget * {
        auto *combo = new QComboBox;
        combo->addItem(QStringLiteral("Choice"));
        return combo;
    });
    QTest::newRow("line edit") << WidgetMaker([]() -> QWidget * {
        auto *line = new QLineEdit(QStringLiteral("Line"));
        line->setReadOnly(true); // no blinking cursor, which would be a difference too
        return line;
    });
    QTest::newRow("spin box") << WidgetMaker([]() -> QWidget * {
        auto *spin = new QSpinBox;
        spin->setReadOnly(true);
        return spin;
    });
    QTest::newRow("text edit") << WidgetMaker([]() -> QWidget * {
        auto *text = new QTextEdit;
        text->setReadOnly(true);
        return text;
    });
    QTest::newRow("slider") << WidgetMaker([]() -> QWidget * { return new QSlider(Qt::Horizontal); });
    QTest::newRow("tab bar") << WidgetMaker([]() -> QWidget * {
        auto *tabs = new QTabBar;
        tabs->addTab(QStringLiteral("One"));
        tabs->addTab(QStringLiteral("Two"));
        return tabs;
    });
    QTest::newRow("empty list") << WidgetMaker([]() -> QWidget * { return new QListWidget; });
    QTest::newRow("list") << WidgetMaker([]() -> QWidget * {
        auto *list = new QListWidget;
        list->addItems({QStringLiteral("First"), QStringLiteral("Second")});
        list->setCurrentRow(0);
        return list;
    });
}

void TestDarkStyle::focusIsSeen()
{
    QFETCH(WidgetMaker, make);
    QApplication::setStyle(new DarkStyle);
    QWidget window;
    QWidget *const other = new QWidget(&window); // not a control: nothing of it changes by the focus
    other->setFocusPolicy(Qt::StrongFocus);
    QWidget *const widget = make();
    widget->setParent(&window);
    widget->setFocusPolicy(Qt::StrongFocus);
    widget->setGeometry(10, 10, 160, 60);
    window.resize(200, 100);
    window.show();
    QApplication::setActiveWindow(&window);
    QVERIFY(QTest::qWaitForWindowActive(&window));
    other->setFocus(Qt::TabFocusReason);
    QTRY_VERIFY(other->hasFocus());
    const QImage without = picture(*widget);
    QTest::keyClick(&window, Qt::Key_Tab); // by the keyboard, as its users do
    widget->setFocus(Qt::TabFocusReason);
    QTRY_VERIFY(widget->hasFocus());
    const QImage with = picture(*widget);
    const int changed = differingPixels(without, with);
    QVERIFY2(changed >= 30, qPrintable(QString::number(changed)));
    // What is new must stand out from what was there.
    double best = 1.0;
    for (int y = 0; y < with.height(); ++y) {
        for (int x = 0; x < with.width(); ++x)
            best = qMax(best, contrast(with.pixelColor(x, y), without.pixelColor(x, y)));
    }
    QVERIFY2(best >= 3.0, qPrintable(QString::number(best)));
}

void TestDarkStyle::focusOfAPictureIsSeenByKeysOnly()
{
    QApplication::setStyle(new DarkStyle);
    QWidget window;
    QToolButton button(&window);
    // A picture by a style sheet alone, in the highlight's colour.
    QTemporaryDir folder;
    QImage accent(24, 24, QImage::Format_RGB32);
    accent.fill(QColor(0x15, 0xcf, 0xbb));
    QVERIFY(accent.save(folder.filePath(QStringLiteral("accent.png"))));
    button.setStyleSheet(
        QStringLiteral("QToolButton{border-image: url(%1);}").arg(folder.filePath(QStringLiteral("accent.png"))));
    button.setFocusPolicy(Qt::StrongFocus);
    button.setGeometry(10, 10, 24, 24);
    window.resize(60, 60);
    window.show();
    QApplication::setActiveWindow(&window);
    QVERIFY(QTest::qWaitForWindowActive(&window));
    button.clearFocus();
    const QImage without = picture(button);
    button.setFocus(Qt::MouseFocusReason);
    window.setAttribute(Qt::WA_KeyboardFocusChange, false);
    QTRY_VERIFY(button.hasFocus());
    QCOMPARE(differingPixels(without, picture(button)), 0);
    window.setAttribute(Qt::WA_KeyboardFocusChange);
    const QImage with = picture(button);
    QVERIFY2(differingPixels(without, with) >= 60, qPrintable(QString::number(differingPixels(without, with))));
    QCOMPARE(with.pixelColor(12, 0), QColor(Qt::white));
}

void TestDarkStyle::plainFont()
{
    QApplication::setStyle(new DarkStyle);
    const QFont before = QApplication::font();
    QFont caption = before;
    caption.setBold(true);
    caption.setPixelSize(20);
    QApplication::setFont(caption);
    expectWarning(QStringLiteral("propagateSizeHints")); // of the platform without a screen
    QFileDialog dialog;
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.show();
    const QMenu menu;
    menu.ensurePolished();
    const QPushButton outside;
    outside.ensurePolished();
    QVector<QPair<QFont, QString>> plain{{menu.font(), QStringLiteral("menu")},
                                         {dialog.font(), QStringLiteral("dialog")}};
    const QList<QWidget *> inside = dialog.findChildren<QWidget *>();
    for (const QWidget *widget : inside) {
        if (widget->isVisible() && !qobject_cast<const QScrollBar *>(widget)) // which has no text
            plain.append({widget->font(),
                          QLatin1String(widget->metaObject()->className()) + QLatin1Char(' ') + widget->objectName()});
    }
    const QFont large = outside.font();
    dialog.hide();
    QApplication::setFont(before);
    QVERIFY(plain.size() > 15);
    for (const auto &font : qAsConst(plain)) {
        QVERIFY2(font.first.pixelSize() == 12, qPrintable(font.second));
        QVERIFY2(!font.first.bold(), qPrintable(font.second));
    }
    QCOMPARE(large.pixelSize(), 20);
    QVERIFY(large.bold());
}

void TestDarkStyle::dialogButtonsHaveNoIcons()
{
    QApplication::setStyle(new DarkStyle);
    const QDialogButtonBox box(QDialogButtonBox::Save | QDialogButtonBox::Cancel);
    const QList<QAbstractButton *> buttons = box.buttons();
    QCOMPARE(buttons.size(), 2);
    for (const QAbstractButton *button : buttons)
        QVERIFY(button->icon().isNull());
}

void TestDarkStyle::withoutTheSheet()
{
    QApplication::setStyle(new DarkStyle); // brings the sheet in
    setPlainStyle();
    QVERIFY(!sheetOfResource().isEmpty());
    takeSheetAway();
    QVERIFY(sheetOfResource().isEmpty());
    qApp->setStyleSheet(QStringLiteral("QLabel{color:red}"));
    QApplication::setStyle(new DarkStyle);
    const QString sheet = qApp->styleSheet();
    const QPalette palette = QApplication::palette();
    QLineEdit line;
    line.resize(120, 30);
    const QImage drawn = picture(line);
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    const QString sheetAfter = qApp->styleSheet();
    bringSheetBack();
    QCOMPARE(sheet, QStringLiteral("QLabel{color:red}"));
    QCOMPARE(sheetAfter, sheet);
    QCOMPARE(palette.color(QPalette::Window), QColor(0x20, 0x20, 0x20));
    QVERIFY(luminance(drawn.pixelColor(60, 15)) < 0.02);
    setPlainStyle();
    QApplication::setStyle(new DarkStyle);
    QCOMPARE(qApp->styleSheet(), sheetOfResource());
    QVERIFY(!sheetOfResource().isEmpty());
}

void TestDarkStyle::disabledIsSeen_data()
{
    focusIsSeen_data();
}

void TestDarkStyle::disabledIsSeen()
{
    QFETCH(WidgetMaker, make);
    QApplication::setStyle(new DarkStyle);
    const std::unique_ptr<QWidget> widget(make());
    widget->resize(160, 60);
    const QImage enabled = picture(*widget);
    widget->setEnabled(false);
    const int changed = differingPixels(enabled, picture(*widget));
    QVERIFY2(changed >= 20, qPrintable(QString::number(changed)));
}

void TestDarkStyle::checkStatesAreSeen()
{
    QApplication::setStyle(new DarkStyle);
    QCheckBox check;
    check.setTristate(true);
    check.resize(check.sizeHint());
    const QImage off = picture(check);
    check.setCheckState(Qt::PartiallyChecked);
    const QImage partly = picture(check);
    check.setCheckState(Qt::Checked);
    const QImage on = picture(check);
    QVERIFY(differingPixels(off, on) > 40);
    QVERIFY(differingPixels(off, partly) > 40);
    QVERIFY(differingPixels(on, partly) > 5);
    QRadioButton radio;
    radio.resize(radio.sizeHint());
    const QImage notChosen = picture(radio);
    radio.setChecked(true);
    QVERIFY(differingPixels(notChosen, picture(radio)) > 40);
}

void TestDarkStyle::noiseOfLegendButtonsIsDropped()
{
    const HandlerScope scope(keepMessage);
    const StyleSheetNoiseFilter filter;
    qWarning("Could not parse stylesheet of object CustomSourceButton(0x55d0c0ffee00, name = \"con0\")");
    QCOMPARE(messages, QStringList());
}

void TestDarkStyle::otherMessagesPass_data()
{
    QTest::addColumn<bool>("critical");
    QTest::addColumn<QString>("message");
    QTest::newRow("of another object") << false << QStringLiteral("Could not parse stylesheet of object QLabel(0x1)");
    QTest::newRow("of a class whose name is longer")
        << false << QStringLiteral("Could not parse stylesheet of object CustomSourceButtonBar(0x1)");
    QTest::newRow("of the application") << false << QStringLiteral("Could not parse application stylesheet");
    QTest::newRow("the text within another")
        << false << QStringLiteral("x Could not parse stylesheet of object CustomSourceButton(0x1)");
    QTest::newRow("no warning") << true
                                << QStringLiteral("Could not parse stylesheet of object CustomSourceButton(0x1)");
    QTest::newRow("empty") << false << QString();
}

void TestDarkStyle::otherMessagesPass()
{
    QFETCH(bool, critical);
    QFETCH(QString, message);
    const HandlerScope scope(keepMessage);
    {
        const StyleSheetNoiseFilter filter;
        if (critical)
            qCritical("%s", qPrintable(message));
        else
            qWarning("%s", qPrintable(message));
    }
    QCOMPARE(messages, QStringList(message));
}

void TestDarkStyle::realButtonIsSilenced()
{
    // With Qt's own words: they say what the filter has to know.
    for (const bool filtered : {false, true}) {
        const HandlerScope scope(keepMessage);
        const auto filter = filtered ? std::make_unique<StyleSheetNoiseFilter>() : nullptr;
        CustomSourceButton button(nullptr, 0, Qt::red);
        button.ensurePolished();
        picture(button);
        QCOMPARE(messages.isEmpty(), filtered);
    }
}

void TestDarkStyle::filtersInEachOther()
{
    const HandlerScope scope(keepMessage);
    const StyleSheetNoiseFilter outer;
    {
        const StyleSheetNoiseFilter inner;
        qWarning("first");
    }
    qWarning("Could not parse stylesheet of object CustomSourceButton(0x1)");
    qWarning("second");
    QCOMPARE(messages, (QStringList{QStringLiteral("first"), QStringLiteral("second")}));
}

void TestDarkStyle::laterHandlerStays()
{
    const HandlerScope scope(nullptr);
    {
        const StyleSheetNoiseFilter filter;
        qInstallMessageHandler(keepMessage);
    }
    qWarning("kept");
    QCOMPARE(messages, QStringList{QStringLiteral("kept")});
}

QTEST_MAIN(TestDarkStyle)
#include "tst_darkstyle.moc"
