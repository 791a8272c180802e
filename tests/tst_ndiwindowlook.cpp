#include "tests/support/formwindow.h"
#include "tests/support/testbase.h"

#include <QHelpEvent>
#include <QSignalSpy>
#include <QStyleOptionComboBox>
#include <QToolTip>
#include <QtTest>

#include <memory>

namespace {

/// All that the form names.
QList<QWidget *> namedWidgets(const FormWindow &window)
{
    QList<QWidget *> named;
    const QList<QWidget *> all = window.form.ndiMainWidget->findChildren<QWidget *>();
    for (QWidget *widget : all) {
        if (!widget->objectName().isEmpty() && !widget->objectName().startsWith(QLatin1String("qt_")))
            named.append(widget);
    }
    return named;
}

/// What is cut off of a visible widget with a fixed text, or an empty text.
QString cutOff(const QWidget *widget)
{
    QSize needed;
    QSize there = widget->size();
    if (const auto *label = qobject_cast<const QLabel *>(widget)) {
        needed = label->sizeHint();
        if (qobject_cast<const ElidedLabel *>(widget))
            needed.setWidth(qobject_cast<const ElidedLabel *>(widget)->isCut() ? QWIDGETSIZE_MAX : 0);
    } else if (const auto *button = qobject_cast<const QAbstractButton *>(widget)) {
        // The plates have 24 pixels for their picture.
        const int picture = widget->height() == 26 ? 24 : 0;
        needed = button->fontMetrics().boundingRect(button->text()).size() + QSize(picture, 0);
    } else if (const auto *box = qobject_cast<const QComboBox *>(widget)) {
        QStyleOptionComboBox option;
        option.initFrom(box);
        option.editable = false;
        there = box->style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, box).size();
        needed = QSize(0, box->fontMetrics().height());
        for (int i = 0; i < box->count(); ++i)
            needed.setWidth(qMax(needed.width(), box->fontMetrics().horizontalAdvance(box->itemText(i))));
    }
    if (needed.width() > there.width() || needed.height() > there.height())
        return QStringLiteral("%1 has %2x%3 and needs %4x%5; ")
            .arg(widget->objectName())
            .arg(there.width())
            .arg(there.height())
            .arg(needed.width())
            .arg(needed.height());
    if (!widget->parentWidget()->rect().contains(widget->geometry()))
        return widget->objectName() + QStringLiteral(" reaches out of its parent; ");
    return QString();
}

} // namespace

/// Colours, fonts and sizes of the window's form.
class TestNdiWindowLook final : public TestBase {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase() { m_window.reset(); }
    void panelColours();
    void textColours();
    void fonts();
    void styleSheets_data();
    void styleSheets();
    void pictureButtons();
    void optionLabels();
    void nothingIsCutOff_data();
    void nothingIsCutOff();
    void longNames();
    void previewDoesNotPush();
    void elidedLabel();

private:
    std::unique_ptr<FormWindow> m_window; ///< as it is at first; nothing changes it
};

void TestNdiWindowLook::initTestCase()
{
    QVERIFY(dressApplication());
    m_window = std::make_unique<FormWindow>();
    m_window->show();
}

void TestNdiWindowLook::panelColours()
{
    const Ui::NDIWindow &form = m_window->form;
    const QImage picture = m_window->grab().toImage();
    const auto colourIn = [&](const QWidget *widget, const QPoint &place) {
        return picture.pixelColor(widget->mapTo(m_window.get(), place) * picture.devicePixelRatio());
    };
    for (const QWidget *panel : {form.vW, static_cast<QWidget *>(form.SourceContainer), form.vW1, form.infos,
                                 form.wid_info, form.tabs_3, form.wid_preview}) {
        QVERIFY2(colourIn(panel, {panel->width() / 2, 3}) == QColor(0x20, 0x20, 0x20), qPrintable(panel->objectName()));
    }
    for (const QWidget *ground : {form.fps, form.ping, form.trackContainer})
        QVERIFY2(colourIn(ground, {ground->width() / 2, 3}) == QColor(0x15, 0x15, 0x15),
                 qPrintable(ground->objectName()));
    QCOMPARE(colourIn(form.vW, {0, 0}), QColor(0x10, 0x10, 0x10)); // the corner is round
    QCOMPARE(colourIn(form.btn_test, {20, 20}), QColor(21, 207, 187));
    QCOMPARE(colourIn(form.btn_dev, {10, 10}), QColor(0x20, 0x20, 0x20));
    QCOMPARE(colourIn(form.btn_system, {10, 10}), QColor(0x1a, 0x1a, 0x1a));
    QCOMPARE(colourIn(form.btn_network, {10, 10}), QColor(0x1a, 0x1a, 0x1a));
    QCOMPARE(colourIn(form.timeList, {10, 3}), QColor(0x77, 0x77, 0x77));
}

void TestNdiWindowLook::textColours()
{
    const Ui::NDIWindow &form = m_window->form;
    const auto colourOf = [](QWidget *widget) {
        widget->ensurePolished();
        return widget->palette().color(widget->foregroundRole());
    };
    for (QWidget *caption : {form.label_2, form.label_4, form.label_cpu, form.L1, form.L3, form.L7, form.time_label,
                             form.receiverCount, form.lblNetGateway, form.lblLatencyCaption})
        QVERIFY2(colourOf(caption) == QColor(0x77, 0x77, 0x77), qPrintable(caption->objectName()));
    for (QLabel *value : {static_cast<QLabel *>(form.label_videoWidth), static_cast<QLabel *>(form.label_cpu_val),
                          static_cast<QLabel *>(form.L2), form.L4, form.L8,
                          static_cast<QLabel *>(form.lblNetGatewayValue), form.label_source})
        QVERIFY2(colourOf(value) == QColor(Qt::white), qPrintable(value->objectName()));
    QCOMPARE(colourOf(form.btn_dev), QColor(21, 207, 187));
    QCOMPARE(colourOf(form.btn_system), QColor(0x42, 0x42, 0x42));
    QCOMPARE(colourOf(form.lblSingle), QColor(200, 200, 200));
    QCOMPARE(colourOf(form.lblMultiple), QColor(100, 100, 100));
}

void TestNdiWindowLook::fonts()
{
    int seen = 0;
    const QList<QWidget *> named = namedWidgets(*m_window);
    for (QWidget *widget : named) {
        const auto *label = qobject_cast<QLabel *>(widget);
        const auto *button = qobject_cast<QAbstractButton *>(widget);
        if ((label && !label->text().isEmpty()) || (button && !button->text().isEmpty())
            || qobject_cast<QComboBox *>(widget) || qobject_cast<QTableWidget *>(widget)) {
            ++seen;
            widget->ensurePolished();
            QVERIFY2(widget->font().family() == QLatin1String("Kumbh Sans"), qPrintable(widget->objectName()));
        }
    }
    QVERIFY(seen > 90);
    QCOMPARE(m_window->form.label_source->font().pixelSize(), 16);
    QCOMPARE(m_window->form.btn_test->font().pixelSize(), 16);
    QVERIFY(m_window->form.btn_test->font().weight() >= QFont::Bold);
#ifdef VEXA_HAS_KUMBH_SANS
    QCOMPARE(QFontInfo(m_window->form.label_source->font()).family(), QStringLiteral("Kumbh Sans"));
#endif
}

void TestNdiWindowLook::styleSheets_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QStringList>("parts");
    // Names are parted by blanks, parts of the sheets by bars.
    const auto add = [](const char *row, const char *names, const char *parts) {
        QTest::newRow(row) << QString::fromLatin1(names).split(QLatin1Char(' '))
                           << QString::fromLatin1(parts).split(QLatin1Char('|'));
    };
    add("panels", "vW SourceContainer vW1 benchmark_container wid_preview infos",
        "background-color: #202020;|border: none;|border-radius: 5px;");
    add("charts", "fps dataflow ping analysis_latency_flow analysis_data_flow trackContainer",
        "background-color: #151515;");
    add("combo boxes", "sourceList sourceList_2 threadCount timeList cmbNetworkAdapters cmbPreviewSources",
        "background-color: #777777;|color: white;|border-radius: 5px;|padding: 2px "
        "6px;|QComboBox::down-arrow{\n\timage: url(:/images/arrow-down.png);\n\twidth: 25px;\n\theight: 25px;\n}");
    add("test button", "btn_test", "background-color: #15cfbb;|color: white;|700 16px|border-radius: 15px;");
    add("sources", "sourceTable", "background-color: #151515;|gridline-color: #212121;|border: 1px solid #141414;");
    add("status", "tblStatus",
        "#tblStatus{|background-color: #151515;|gridline-color: #333333;|border: 1px solid #333333;|color: #777;|font: "
        "bold 12px|QHeaderView::section{\n\tbackground-color: #151515;\n\tcolor: white;");
    add("refresh", "btn_refresh", ":/images/refresh.png|QToolButton:hover{|:/images/refresh-hover.png");
    add("placeholder", "lblDefaultImage", ":/images/no-source-background.jpg");
    add("export", "btn_export btn_export1",
        "QToolButton{\n\tborder-image: url(:/images/save-vexa-file.png);\n}|QToolButton:hover{\n\tborder-image: "
        "url(:/images/save-vexa-file-hover.png);\n}|QToolButton:pressed{\n\tborder-image: "
        "url(:/images/save-vexa-file.png);\n}");
    add("options", "singleOption multiOption analysisOption benchmarkOption",
        ":checked{\n\tcolor: rgb(200, 200, 200);|:unchecked{\n\tcolor: rgb(100, 100, 100);|::indicator{\n\twidth: "
        "12px;\n\theight: 12px;|:/images/selected.png|:/images/unselected.png");
}

void TestNdiWindowLook::styleSheets()
{
    QFETCH(QStringList, names);
    QFETCH(QStringList, parts);
    for (const QString &name : names) {
        const QString sheet = m_window->findChild<QWidget *>(name)->styleSheet();
        for (const QString &part : parts)
            QVERIFY2(sheet.contains(part), qPrintable(name + QStringLiteral(": ") + part));
    }
}

void TestNdiWindowLook::pictureButtons()
{
    const QString sheet =
        QStringLiteral("QToolButton{\n\tborder-image: url(:/images/revision-mode-off.png);\n}\n\n"
                       "QToolButton[selected=true]{\n\tborder-image: url(:/images/revision-mode-hover.png);\n}");
    FormWindow window;
    window.show();
    const QString look = QStringLiteral("#%1{background-color:#%2;color:#%3;border:none;"
                                        "border-top-left-radius:5px;border-top-right-radius:5px;}");
    const Ui::NDIWindow &form = window.form;
    QCOMPARE(form.btn_dev->styleSheet(),
             look.arg(QStringLiteral("btn_dev"), QStringLiteral("202020"), QStringLiteral("15cfbb")));
    QCOMPARE(form.btn_system->styleSheet(),
             look.arg(QStringLiteral("btn_system"), QStringLiteral("1a1a1a"), QStringLiteral("424242")));
    QCOMPARE(form.btn_network->styleSheet(),
             look.arg(QStringLiteral("btn_network"), QStringLiteral("1a1a1a"), QStringLiteral("424242")));
    for (QToolButton *button : {form.btn_import, form.btn_import1, form.btn_export, form.btn_export1})
        QCOMPARE(button->size(), QSize(86, 26));
    QCOMPARE(form.btn_refresh->size(), QSize(24, 24));
    for (QToolButton *button : {form.btn_import, form.btn_import1}) {
        QCOMPARE(button->styleSheet(), sheet);
        QCOMPARE(button->property("selected"), QVariant(false));
    }
    const QImage off = form.btn_import1->grab().toImage();
    form.btn_import1->setProperty("selected", true);
    form.btn_import1->style()->unpolish(form.btn_import1);
    form.btn_import1->style()->polish(form.btn_import1);
    const QImage selected = form.btn_import1->grab().toImage();
    QVERIFY(off != selected);
    QVERIFY(qGray(selected.pixel(80, 4)) > qGray(off.pixel(80, 4)) + 50); // the bright plate
    QCOMPARE(form.btn_import1->size(), QSize(86, 26));
}

void TestNdiWindowLook::optionLabels()
{
    FormWindow window;
    window.show();
    const Ui::NDIWindow &form = window.form;
    const auto colourOf = [](const QWidget *widget) { return widget->palette().color(widget->foregroundRole()); };
    QTest::mouseClick(form.lblMultiple, Qt::LeftButton);
    QVERIFY(form.multiOption->isChecked());
    QVERIFY(!form.singleOption->isChecked());
    QCOMPARE(colourOf(form.lblMultiple), QColor(200, 200, 200));
    QCOMPARE(colourOf(form.lblSingle), QColor(100, 100, 100));
    form.analysisOption->setEnabled(false);
    QVERIFY(!form.lblAnalysis->isEnabled());
    QCOMPARE(colourOf(form.lblAnalysis), QColor(60, 60, 60));
    QTest::mouseClick(form.lblAnalysis, Qt::LeftButton);
    QVERIFY(form.multiOption->isChecked());
    form.analysisOption->setEnabled(true);
    QCOMPARE(colourOf(form.lblAnalysis), QColor(100, 100, 100));
    const QSignalSpy clicks(form.benchmarkOption, &QRadioButton::clicked);
    QTest::mousePress(form.lblBenchMark, Qt::LeftButton);
    QTest::mouseRelease(form.lblBenchMark, Qt::LeftButton, {}, QPoint(-5, 5)); // moved off before the release
    QCOMPARE(clicks.count(), 0);
}

void TestNdiWindowLook::nothingIsCutOff_data()
{
    QTest::addColumn<QSize>("size");
    for (const QSize size : {QSize(1752, 968), QSize(1280, 720), QSize(1280, 670), QSize(3840, 2160)})
        QTest::newRow(qPrintable(QStringLiteral("%1 x %2").arg(size.width()).arg(size.height()))) << size;
}

void TestNdiWindowLook::nothingIsCutOff()
{
    QFETCH(QSize, size);
    FormWindow window;
    const Ui::NDIWindow &form = window.form;
    form.lblLatencyValue->setText(QStringLiteral("Avg: 123.456mS  Min: 100.123mS  Max: 999.999mS"));
    form.lblDataRateValue->setText(QStringLiteral("123.456MBps"));
    form.L4->setText(QStringLiteral("59.9401fps"));
    form.L8->setText(QStringLiteral("1234 ms"));
    form.label_videoFPS->setText(QStringLiteral("59.9401fps"));
    form.lblNetIPAddressValue->setText(QStringLiteral("192.168.100.200(Preferred)"));
    window.show();
    window.resize(size);
    QString cut;
    int seen = 0;
    for (const QString &mode : {QStringLiteral("SINGLE"), QStringLiteral("MULTIPLE"), QStringLiteral("expanded"),
                                QStringLiteral("ANALYSIS"), QStringLiteral("BENCHMARK")}) {
        for (QWidget *pane : {form.dev_info, form.sys_info, form.net_info}) {
            window.showMode(mode);
            window.showTab(pane);
            QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
            if (window.size() != size)
                cut += QStringLiteral("the window grew to %1x%2; ").arg(window.width()).arg(window.height());
            const QList<QWidget *> named = namedWidgets(window);
            for (const QWidget *widget : named) {
                if (!widget->isVisible())
                    continue;
                ++seen;
                const QString here = cutOff(widget);
                if (!here.isEmpty())
                    cut += mode + QLatin1Char(' ') + pane->objectName() + QStringLiteral(": ") + here;
            }
        }
    }
    QVERIFY2(cut.isEmpty(), qPrintable(cut));
    QVERIFY(seen > 900);
}

void TestNdiWindowLook::longNames()
{
    FormWindow window;
    const Ui::NDIWindow &form = window.form;
    window.show();
    window.resize(1280, 720);
    const QSize least = window.minimumSizeHint();
    const QString name(200, QLatin1Char('W'));
    form.sourceList->addItem(name);
    form.cmbNetworkAdapters->addItem(name);
    form.cmbNetworkAdapters->setCurrentIndex(1);
    for (QLabel *label : {static_cast<QLabel *>(form.L2), static_cast<QLabel *>(form.lblAnalysisProgressStatusValue),
                          static_cast<QLabel *>(form.label_cpu_val), static_cast<QLabel *>(form.label_gpu_driver_val),
                          static_cast<QLabel *>(form.lblNetDescriptionValue)})
        label->setText(name);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    QCOMPARE(window.size(), QSize(1280, 720));
    QCOMPARE(window.minimumSizeHint().width(), least.width());
    QVERIFY(form.L2->isCut());
    QVERIFY(form.sourceList->shownText().endsWith(QChar(0x2026)));
    for (QWidget *widget : {static_cast<QWidget *>(form.L2), static_cast<QWidget *>(form.sourceList)}) {
        QHelpEvent help(QEvent::ToolTip, QPoint(2, 2), widget->mapToGlobal(QPoint(2, 2)));
        QVERIFY(QCoreApplication::sendEvent(widget, &help));
        QVERIFY(QToolTip::text().contains(name));
        QToolTip::hideText();
    }
}

void TestNdiWindowLook::previewDoesNotPush()
{
    FormWindow window;
    const Ui::NDIWindow &form = window.form;
    window.show();
    const QRect room = form.lblDefaultImage->geometry();
    const QSize least = window.minimumSizeHint();
    form.lblDefaultImage->hide();
    form.vidGlPreview->setFixedSize(1920, 1080);
    form.widPreviewWrapper->setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    QCOMPARE(form.widPreviewWrapper->sizePolicy().horizontalPolicy(), QSizePolicy::Ignored);
    QCOMPARE(form.widPreviewWrapper->sizePolicy().verticalPolicy(), QSizePolicy::Ignored);
    QCOMPARE(form.widPreviewWrapper->minimumSize(), form.lblDefaultImage->minimumSize());
    QCOMPARE(window.minimumSizeHint(), least);
    QVERIFY(room.width() > 300 && room.height() > 150);
}

void TestNdiWindowLook::elidedLabel()
{
    ElidedLabel label;
    label.setText(QStringLiteral("<b>one</b> two three four five six seven eight nine ten\nshort"));
    label.resize(120, 100);
    QVERIFY(label.isCut());
    QStringList lines = label.shownText().split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 2);
    QVERIFY(lines.at(0).startsWith(QStringLiteral("<b>one")) && lines.at(0).endsWith(QChar(0x2026)));
    QCOMPARE(lines.at(1), QStringLiteral("short"));
    QVERIFY(!label.hasHeightForWidth());
    label.setMaximumLines(20);
    QVERIFY(!label.isCut());
    lines = label.shownText().split(QLatin1Char('\n'));
    QVERIFY(lines.size() > 3);
    QCOMPARE(lines.join(QLatin1Char(' ')), QString(label.text()).replace(QLatin1Char('\n'), QLatin1Char(' ')));
    QCOMPARE(label.heightForWidth(120), label.fontMetrics().lineSpacing() * lines.size());
    label.setMaximumLines(2);
    QVERIFY(label.isCut());
    QCOMPARE(label.shownText().split(QLatin1Char('\n')).size(), 3);
    label.setMaximumLines(0);
    QCOMPARE(label.maximumLines(), 1);
    label.setText(QString(200, QLatin1Char('W'))); // one word, longer than a line
    label.setMaximumLines(3);
    lines = label.shownText().split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 3);
    for (const QString &line : qAsConst(lines))
        QVERIFY(label.fontMetrics().horizontalAdvance(line) <= 120);
}

QTEST_MAIN(TestNdiWindowLook)
#include "tst_ndiwindowlook.moc"
