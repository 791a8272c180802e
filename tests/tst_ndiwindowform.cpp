#include "tests/support/formwindow.h"
#include "tests/support/testbase.h"

#include <QAccessible>
#include <QtTest>

#include <array>
#include <memory>

namespace {

const QString noText = QStringLiteral("(none)"); ///< a widget without a text, or with one that is not fixed

QString textOf(const QWidget *widget)
{
    if (const auto *label = qobject_cast<const QLabel *>(widget))
        return label->text();
    if (const auto *button = qobject_cast<const QAbstractButton *>(widget))
        return button->text();
    return noText;
}

QStringList itemsOf(const QComboBox *box)
{
    QStringList items;
    for (int i = 0; i < box->count(); ++i)
        items.append(box->itemText(i));
    return items;
}

} // namespace

class TestNdiWindowForm final : public TestBase {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase() { m_window.reset(); }
    void widgets_data();
    void widgets();
    void nothingElse();
    void pages();
    void comboBoxes();
    void layouts();
    void hiddenAtFirst();
    void tabOrder();
    void tabOrderWithCharts();
    void accessibleNames();
    void toolTips();
    void shortcuts();

private:
    std::unique_ptr<FormWindow> m_window; ///< as it is at first; nothing changes it
    QStringList m_names;                  ///< all of widgets_data()
};

void TestNdiWindowForm::initTestCase()
{
    QVERIFY(dressApplication());
    m_window = std::make_unique<FormWindow>();
    m_window->show();
    QCOMPARE(m_window->size(), QSize(1752, 968));
}

// Name, class, parent and text of every widget.
void TestNdiWindowForm::widgets_data()
{
    QTest::addColumn<QString>("className");
    QTest::addColumn<QString>("parent");
    QTest::addColumn<QString>("text");
    struct Row {
        const char *name;
        const char *className;
        const char *parent;
        const char *text = nullptr;
    };
    static const Row rows[] = {
#include "tests/ndiwindowform_widgets.inc"
    };
    for (const Row &row : rows) {
        m_names.append(QLatin1String(row.name));
        QTest::newRow(row.name) << QString::fromLatin1(row.className) << QString::fromLatin1(row.parent)
                                << (row.text ? QString::fromLatin1(row.text) : noText);
    }
}

void TestNdiWindowForm::widgets()
{
    QFETCH(QString, className);
    QFETCH(QString, parent);
    QFETCH(QString, text);
    const QList<QWidget *> found = m_window->findChildren<QWidget *>(QLatin1String(QTest::currentDataTag()));
    QCOMPARE(found.size(), 1);
    const QWidget *const widget = found.first();
    QVERIFY(widget->inherits(className.toLatin1().constData()));
    if (className == QLatin1String("QWidget"))
        QCOMPARE(widget->metaObject()->className(), "QWidget");
    QCOMPARE(widget->parentWidget()->objectName(), parent);
    if (text != noText)
        QCOMPARE(textOf(widget), text);
}

void TestNdiWindowForm::nothingElse()
{
    const QList<QWidget *> all = m_window->centralWidget()->findChildren<QWidget *>();
    QStringList others;
    for (const QWidget *widget : all) {
        const QString name = widget->objectName();
        if (!name.isEmpty() && !name.startsWith(QLatin1String("qt_")) && !m_names.contains(name))
            others.append(name);
    }
    QCOMPARE(others, QStringList());
}

void TestNdiWindowForm::pages()
{
    const Ui::NDIWindow &form = m_window->form;
    QCOMPARE(form.SourceContainer->count(), 3);
    QCOMPARE(form.SourceContainer->widget(0), form.pageSingleContainer);
    QCOMPARE(form.SourceContainer->widget(1), form.pageMultiContainer);
    QCOMPARE(form.SourceContainer->widget(2), form.pageAnalysis);
    QCOMPARE(form.SourceContainer->currentIndex(), 0);
    QCOMPARE(form.CentralContainer->count(), 2);
    QCOMPARE(form.CentralContainer->widget(0), form.widReceiverCharts);
    QCOMPARE(form.CentralContainer->widget(1), form.widAnalysisCharts);
    QCOMPARE(form.CentralContainer->currentIndex(), 0);
}

void TestNdiWindowForm::comboBoxes()
{
    const Ui::NDIWindow &form = m_window->form;
    QCOMPARE(itemsOf(form.threadCount), QStringLiteral("1 2 3 4 5 6 7 8").split(QLatin1Char(' ')));
    QCOMPARE(itemsOf(form.timeList),
             QStringLiteral("00:01:00 00:02:00 00:03:00 00:04:00 00:05:00").split(QLatin1Char(' ')));
    QCOMPARE(itemsOf(form.cmbNetworkAdapters), QStringList{QStringLiteral("NONE")});
    QCOMPARE(itemsOf(form.cmbPreviewSources), QStringList{QStringLiteral("NONE")});
    QCOMPARE(itemsOf(form.sourceList), QStringList());
    for (const QComboBox *box : {form.threadCount, form.timeList, form.cmbPreviewSources})
        QCOMPARE(box->currentIndex(), 0);
}

void TestNdiWindowForm::layouts()
{
    const Ui::NDIWindow &form = m_window->form;
    QCOMPARE(m_window->centralWidget(), form.ndiMainWidget);
    const auto *columns = qobject_cast<QHBoxLayout *>(form.ndiMainWidget->layout());
    QVERIFY(columns);
    QCOMPARE(columns->spacing(), 15);
    QCOMPARE(columns->contentsMargins(), QMargins());
    QCOMPARE(columns->count(), 3);
    QCOMPARE(columns->itemAt(0)->widget(), form.verticalWidget1);
    QCOMPARE(columns->itemAt(1)->widget(), form.CentralContainer);
    QCOMPARE(columns->itemAt(2)->widget(), form.verticalWidget3);
    const auto *left = qobject_cast<QVBoxLayout *>(form.verticalWidget1->layout());
    QVERIFY(left);
    QCOMPARE(left->spacing(), 15);
    QCOMPARE(left->contentsMargins(), QMargins());
    for (const QWidget *widget : {form.horizontalWidget, form.benchmark_container, form.widPreviewWrapper})
        QVERIFY2(qobject_cast<QGridLayout *>(widget->layout()), qPrintable(widget->objectName()));
    const auto *options = qobject_cast<QGridLayout *>(form.horizontalWidget->layout());
    const std::array<QWidget *, 4> buttons{form.singleOption, form.multiOption, form.analysisOption,
                                           form.benchmarkOption};
    const std::array<QWidget *, 4> labels{form.lblSingle, form.lblMultiple, form.lblAnalysis, form.lblBenchMark};
    for (int column = 0; column < 4; ++column) {
        QCOMPARE(options->itemAtPosition(0, column)->widget(), buttons.at(static_cast<std::size_t>(column)));
        QCOMPARE(options->itemAtPosition(1, column)->widget(), labels.at(static_cast<std::size_t>(column)));
    }
    QCOMPARE(form.widPreviewWrapper->layout()->sizeConstraint(), QLayout::SetNoConstraint);
}

void TestNdiWindowForm::hiddenAtFirst()
{
    const Ui::NDIWindow &form = m_window->form;
    QStringList hidden;
    const QList<QWidget *> all = form.ndiMainWidget->findChildren<QWidget *>();
    for (const QWidget *widget : all) {
        if (m_names.contains(widget->objectName()) && widget->isHidden())
            hidden.append(widget->objectName());
    }
    // Pages of the stacks, and what the modes, the tabs and the tests show.
    QStringList expected{
        QStringLiteral("pageMultiContainer"), QStringLiteral("pageAnalysis"), QStringLiteral("widAnalysisCharts"),
        QStringLiteral("btn_collapsing"), QStringLiteral("multiInfoContainer"), QStringLiteral("benchmark_container"),
        QStringLiteral("widStatusTable"), QStringLiteral("dataflow"), QStringLiteral("waiting_spinner"),
        QStringLiteral("sys_info"), QStringLiteral("net_info"), QStringLiteral("widPreviewWrapper"),
        // Never used: nobody fills them.
        QStringLiteral("toolButton"), QStringLiteral("horizontalWidget_2"), QStringLiteral("horizontalWidget_7")};
    hidden.sort();
    expected.sort();
    QCOMPARE(hidden, expected);
    QVERIFY(form.singleOption->isChecked());
}

namespace {

/// Names of what Tab reaches, from the first control on, were everything visible.
QStringList focusOrder(QWidget *first)
{
    QStringList names;
    QWidget *widget = first;
    do {
        if ((widget->focusPolicy() & Qt::TabFocus) && !widget->isWindow())
            names.append(widget->objectName().isEmpty()
                             ? widget->parentWidget()->objectName() + QLatin1Char('/') + widget->accessibleName()
                             : widget->objectName());
        widget = widget->nextInFocusChain();
    } while (widget != first && names.size() < 1000);
    return names;
}

} // namespace

void TestNdiWindowForm::tabOrder()
{
    QStringList order = focusOrder(m_window->form.btn_refresh);
    const QStringList expected =
        QStringLiteral("btn_refresh singleOption multiOption analysisOption benchmarkOption sourceList threadCount "
                       "btn_collapsing btn_expanding sourceTable sourceList_2 btn_benchmark timeList btn_test "
                       "btn_import1 btn_export1 toolButton tblStatus detailTable btn_import btn_export btn_dev "
                       "btn_system btn_network cmbNetworkAdapters cmbPreviewSources")
            .split(QLatin1Char(' '));
    // The tables' own buttons find their places in orderFocus().
    order = order.mid(0, expected.size());
    QCOMPARE(order, expected);
}

void TestNdiWindowForm::tabOrderWithCharts()
{
    FormWindow window;
    const Ui::NDIWindow &form = window.form;
    for (CustomPlot *chart : {form.fpsPlot, form.pingPlot, form.analysis_latency_plot})
        chart->setupLayout();
    expectWarning(QStringLiteral("Could not parse stylesheet")); // the legend's buttons
    form.fpsPlot->setMetaInfo(60, 60, 2);
    window.show();
    orderFocus(form);
    orderFocus(form);
    const QString order = focusOrder(form.btn_refresh).join(QLatin1Char(' '));
    QVERIFY2(order.startsWith(QStringLiteral("btn_refresh singleOption ")), qPrintable(order));
    QVERIFY2(order.contains(QStringLiteral(" sourceTable sourceTable/Show details sourceList_2 ")), qPrintable(order));
    QVERIFY2(order.contains(QStringLiteral(" tblStatus con0 con1 ")), qPrintable(order));
    QVERIFY2(order.indexOf(QStringLiteral("con1")) < order.indexOf(QStringLiteral("Smooth curve")), qPrintable(order));
    QCOMPARE(order.count(QStringLiteral("Raw samples")), 3);
    QVERIFY2(order.lastIndexOf(QStringLiteral("Raw samples")) < order.indexOf(QStringLiteral("btn_dev")),
             qPrintable(order));
    QVERIFY2(order.endsWith(QStringLiteral(" cmbPreviewSources")), qPrintable(order));
}

void TestNdiWindowForm::accessibleNames()
{
    QStringList nameless;
    int controls = 0;
    const QList<QWidget *> all = m_window->form.ndiMainWidget->findChildren<QWidget *>();
    for (QWidget *widget : all) {
        if (widget->focusPolicy() == Qt::NoFocus || widget->objectName().startsWith(QLatin1String("qt_")))
            continue;
        if (qobject_cast<QComboBox *>(widget->parentWidget()) || widget->inherits("QComboBoxPrivateContainer")
            || widget->inherits("QComboBoxListView"))
            continue;
        ++controls;
        const QAccessibleInterface *const face = QAccessible::queryAccessibleInterface(widget);
        if (widget->accessibleName().isEmpty() || !face || face->text(QAccessible::Name).isEmpty())
            nameless.append(widget->objectName() + QLatin1Char(' ') + QLatin1String(widget->metaObject()->className()));
    }
    QCOMPARE(nameless, QStringList());
    QVERIFY(controls >= 26);
}

// Every figure and every control tells what it is; a row tells it for its two labels.
void TestNdiWindowForm::toolTips()
{
    const QStringList exempt = QStringLiteral("toolButton label_info label_gpu_driver_val L2").split(QLatin1Char(' '));
    const auto explains = [](const QWidget *widget) {
        return !widget->toolTip().isEmpty() || !widget->parentWidget()->toolTip().isEmpty();
    };
    QStringList silent;
    const QList<QWidget *> all = m_window->form.ndiMainWidget->findChildren<QWidget *>();
    for (const QWidget *widget : all) {
        const QString name = widget->objectName();
        if (!m_names.contains(name) || exempt.contains(name))
            continue;
        const bool isFigure =
            name.endsWith(QLatin1String("_val")) || name.startsWith(QLatin1String("label_video"))
            || (name.startsWith(QLatin1String("lbl")) && name.endsWith(QLatin1String("Value"))
                && name != QLatin1String("lblAnalysisProgressStatusValue"))
            || QStringList({QStringLiteral("L4"), QStringLiteral("L5"), QStringLiteral("L8"), QStringLiteral("L5_2")})
                   .contains(name);
        const bool isControl = qobject_cast<const QAbstractButton *>(widget) || qobject_cast<const QComboBox *>(widget);
        if ((isFigure || isControl) && !explains(widget))
            silent.append(name);
    }
    QCOMPARE(silent, QStringList());
}

void TestNdiWindowForm::shortcuts()
{
    const Ui::NDIWindow &form = m_window->form;
    QCOMPARE(form.btn_refresh->shortcut(), QKeySequence(Qt::Key_F5));
    for (const QToolButton *button : {form.btn_import, form.btn_import1})
        QCOMPARE(button->shortcut(), QKeySequence(Qt::CTRL + Qt::Key_O));
    for (const QToolButton *button : {form.btn_export, form.btn_export1})
        QCOMPARE(button->shortcut(), QKeySequence(Qt::CTRL + Qt::Key_S));
}

QTEST_MAIN(TestNdiWindowForm)
#include "tst_ndiwindowform.moc"
