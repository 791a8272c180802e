#include "mainwindow/customheader.h"
#include "mainwindow/qtcustomtablewidget.h"
#include "mainwindow/resulttables.h"
#include "mainwindow/sourcecheck.h"
#include "resources/vexaresources.h"
#include "tests/support/testbase.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

namespace {

const QString expandStyle =
    QStringLiteral("QPushButton{ border-image: url(:/images/enlarge-table.png);} QPushButton:hover{ border-image: "
                   "url(:/images/enlarge-table-hover.png); }");
const QString reduceStyle = QStringLiteral(
    "QPushButton{margin-right:-3px; border-image: url(:/images/reduce-table.png);} QPushButton:hover{ border-image: "
    "url(:/images/reduce-table-hover.png); }");

QStringList headersOf(const QTableWidget &table)
{
    QStringList titles;
    for (int column = 0; column < table.columnCount(); ++column)
        titles.append(table.horizontalHeaderItem(column)->text());
    return titles;
}

QStringList columnOf(const QTableWidget &table, int column)
{
    QStringList texts;
    for (int row = 0; row < table.rowCount(); ++row)
        texts.append(table.item(row, column) ? table.item(row, column)->text() : QStringLiteral("(none)"));
    return texts;
}

/// The tables as the window uses them.
struct Tables {
    explicit Tables(const QStringList &names)
    {
        header = setUpSourceTable(&sources);
        setUpStatusTable(&status);
        sources.setRowCount(names.size());
        for (int row = 0; row < names.size(); ++row) {
            checks.append(fillSourceRow(&sources, row, names.at(row)));
            QObject::connect(checks.last(), &QCheckBox::stateChanged, &status, [this] { update(); });
        }
        QObject::connect(header, &CustomHeader::changed, &status, [this](bool on) {
            for (QCheckBox *check : qAsConst(checks))
                check->setChecked(on);
        });
    }
    void update()
    {
        QVector<int> checked;
        for (int row = 0; row < checks.size(); ++row) {
            if (checks.at(row)->isChecked())
                checked.append(row);
        }
        updateStatusTable(&status, sources, checked, header);
    }

    QtCustomTableWidget sources;
    QTableWidget status;
    CustomHeader *header = nullptr;
    QVector<QCheckBox *> checks;
};

} // namespace

class TestQtCustomTableWidget final : public TestBase {
    Q_OBJECT

private slots:
    void initTestCase() { initVexaResources(); }

    void cornerButton_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::newRow("wide") << QSize(700, 300);
        QTest::newRow("narrow") << QSize(210, 90);
    }

    void cornerButton()
    {
        QFETCH(QSize, size);
        QtCustomTableWidget table;
        table.resize(size);
        table.show();
        QPushButton *const button = table.cornerButton();
        QCOMPARE(button->parentWidget(), &table);
        QCOMPARE(button->text(), QString());
        QCOMPARE(button->geometry(), QRect(size.width() - 29, 4, 28, 28));
        QCOMPARE(button->styleSheet(), expandStyle);
        table.resize(size + QSize(40, 10));
        QCOMPARE(button->geometry(), QRect(size.width() + 11, 4, 28, 28));
        QVERIFY(button->isVisible());
    }

    void cornerButtonStaysInFront()
    {
        QtCustomTableWidget table;
        setUpSourceTable(&table); // its header is younger than the button
        table.resize(300, 200);
        table.show();
        QCOMPARE(table.childAt(300 - 15, 18), table.cornerButton());
    }

    void lookChangesWithTheNextResize()
    {
        QtCustomTableWidget table;
        QVERIFY(table.getExpandFlag());
        table.resize(300, 200);
        table.show();
        table.setExpandFlag(false);
        QVERIFY(!table.getExpandFlag());
        QCOMPARE(table.cornerButton()->styleSheet(), expandStyle);
        const QString before = table.cornerButton()->accessibleName();
        table.resize(310, 200);
        QCOMPARE(table.cornerButton()->styleSheet(), reduceStyle);
        QVERIFY(!before.isEmpty());
        QVERIFY(table.cornerButton()->accessibleName() != before);
        table.setExpandFlag(true);
        table.resize(300, 200);
        QCOMPARE(table.cornerButton()->styleSheet(), expandStyle);
    }

    void asksForDetails()
    {
        QtCustomTableWidget table;
        table.resize(300, 200);
        table.show();
        const QSignalSpy asked(&table, &QtCustomTableWidget::clickedDetails);
        QTest::mousePress(table.cornerButton(), Qt::LeftButton);
        QCOMPARE(asked.count(), 0);
        QTest::mouseRelease(table.cornerButton(), Qt::LeftButton);
        QCOMPARE(asked.count(), 1);
        table.onClickedDetails();
        QCOMPARE(asked.count(), 2);
    }

    void sourceTable()
    {
        Tables tables({QStringLiteral("A (1)"), QStringLiteral("<b>B</b>")});
        QtCustomTableWidget &table = tables.sources;
        table.resize(300, 200);
        table.show();
        QCOMPARE(headersOf(table), QStringList({QString(), QStringLiteral("No"), QStringLiteral("Source Name")}));
        QCOMPARE(table.horizontalHeader(), tables.header);
        QCOMPARE(table.columnWidth(0), 30);
        QCOMPARE(table.columnWidth(1), 30);
        QCOMPARE(table.columnWidth(2), table.viewport()->width() - 60);
        QCOMPARE(tables.header->minimumSectionSize(), 30);
        QCOMPARE(tables.header->defaultSectionSize(), 30);
        for (int section = 0; section < 3; ++section)
            QCOMPARE(tables.header->sectionResizeMode(section), QHeaderView::Fixed);
        QVERIFY(tables.header->stretchLastSection());
        QCOMPARE(table.selectionMode(), QAbstractItemView::NoSelection);
        QCOMPARE(table.rowHeight(0), 20);
        QCOMPARE(table.rowHeight(1), 20);
        QCOMPARE(columnOf(table, 1), QStringList({QStringLiteral("1"), QStringLiteral("2")}));
        QCOMPARE(columnOf(table, 2), QStringList({QStringLiteral("A (1)"), QStringLiteral("<b>B</b>")}));
        QVERIFY(!(table.item(0, 1)->flags() & Qt::ItemIsEditable));
        QCOMPARE(table.item(1, 2)->toolTip(), QStringLiteral("&lt;b&gt;B&lt;/b&gt;"));
    }

    void checkCell()
    {
        QtCustomTableWidget table;
        setUpSourceTable(&table);
        table.setRowCount(2);
        QVERIFY(!sourceCheckAt(table, 0));
        QCheckBox *const check = addSourceCheck(&table, 1, QStringLiteral("A (1)"));
        QCOMPARE(sourceCheckAt(table, 1), check);
        QVERIFY(!sourceCheckAt(table, 0));
        QVERIFY(!sourceCheckAt(table, 2));
        QVERIFY(!check->isChecked());
        QCOMPARE(check->accessibleName(), QStringLiteral("A (1)"));
        const QString blanks(18, QLatin1Char(' '));
        QCOMPARE(check->styleSheet(),
                 QStringLiteral("QCheckBox {background:none;}QCheckBox::indicator {width:") + blanks
                     + QStringLiteral("12px;height:") + blanks.left(17)
                     + QStringLiteral("12px;}QCheckBox::indicator:checked {border-image:url(:/images/selected.png);}"
                                      "QCheckBox::indicator:unchecked {border-image:url(:/images/unselected.png);}"));
        const QWidget *const cell = table.cellWidget(1, 0);
        QCOMPARE(cell->metaObject()->className(), "QWidget");
        QCOMPARE(check->parentWidget(), cell);
        QCOMPARE(cell->layout()->contentsMargins(), QMargins());
        QVERIFY(qobject_cast<QHBoxLayout *>(cell->layout()));
        QCOMPARE(cell->layout()->itemAt(0)->alignment(), Qt::Alignment(Qt::AlignCenter));
        QCOMPARE(cell->layout()->count(), 1);
        const QPointer<QCheckBox> watched(check);
        table.setRowCount(0);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!watched);
    }

    void detailTable()
    {
        QtCustomTableWidget table;
        setUpDetailTable(&table);
        QVERIFY(!table.getExpandFlag());
        QCOMPARE(headersOf(table), QStringLiteral("No,Name,IP,Format,FPS,Width,Height").split(QLatin1Char(',')));
        QVector<int> widths;
        for (int column = 0; column < 7; ++column)
            widths.append(table.columnWidth(column));
        QCOMPARE(widths, QVector<int>({40, 500, 140, 60, 60, 60, 60}));

        table.setRowCount(2);
        fillDetailRow(&table, 1, QStringLiteral("A (1)"), QStringLiteral("10.0.0.1:5961"));
        fillDetailFormat(&table, 1, QStringLiteral("UYVY"), 29.97, 1920, 1080);
        QStringList row;
        for (int column = 0; column < 7; ++column)
            row.append(table.item(1, column)->text());
        QCOMPARE(row, QStringLiteral("2,A (1),10.0.0.1:5961,UYVY,29.97fps,1920,1080").split(QLatin1Char(',')));
        fillDetailFormat(&table, 2, QStringLiteral("UYVY"), 29.97, 1920, 1080);
        fillDetailFormat(&table, -1, QStringLiteral("UYVY"), 29.97, 1920, 1080);
        QCOMPARE(table.rowCount(), 2);
    }

    void statusColumns_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("nameWidth");
        QTest::newRow("of the window at its first size") << 947 << 297;
        QTest::newRow("room for names") << 801 << 151;
        QTest::newRow("narrow") << 700 << 150;
        QTest::newRow("narrower than the figures") << 500 << 150;
    }

    void statusColumns()
    {
        QFETCH(int, width);
        QFETCH(int, nameWidth);
        QTableWidget table;
        setUpStatusTable(&table);
        QCOMPARE(headersOf(table), QStringLiteral("No,Source Name,Receive FPS,Frame Length").split(QLatin1Char(',')));
        table.resize(width, 200);
        sizeStatusColumns(&table);
        QCOMPARE(table.columnWidth(0), 50);
        QCOMPARE(table.columnWidth(1), nameWidth);
        QCOMPARE(table.columnWidth(2), 300);
        QCOMPARE(table.columnWidth(3), 300);
    }

    void cellText()
    {
        QTableWidget table(1, 4);
        setCellText(&table, 0, 2, QStringLiteral("50fps"));
        QTableWidgetItem *const item = table.item(0, 2);
        setCellText(&table, 0, 2, QStringLiteral("60fps"));
        QCOMPARE(table.item(0, 2), item);
        QCOMPARE(item->text(), QStringLiteral("60fps"));
        setCellText(&table, 1, 2, QStringLiteral("60fps"));
        setCellText(&table, -1, 2, QStringLiteral("60fps"));
        QCOMPARE(table.rowCount(), 1);
    }

    void statusFollowsTheBoxes()
    {
        Tables tables({QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")});
        tables.checks.at(2)->setChecked(true);
        tables.checks.at(0)->setChecked(true);
        QCOMPARE(columnOf(tables.status, 0), QStringList({QStringLiteral("1"), QStringLiteral("3")}));
        QCOMPARE(columnOf(tables.status, 1), QStringList({QStringLiteral("A"), QStringLiteral("C")}));
        QVERIFY(!tables.status.item(0, 2));
        QVERIFY(!tables.header->isAllChecked());
        tables.checks.at(0)->setChecked(false);
        QCOMPARE(columnOf(tables.status, 1), QStringList{QStringLiteral("C")});
    }

    void markFollowsTheBoxes()
    {
        Tables tables({QStringLiteral("A"), QStringLiteral("B")});
        tables.checks.at(0)->setChecked(true);
        QVERIFY(!tables.header->isAllChecked());
        tables.checks.at(1)->setChecked(true);
        QVERIFY(tables.header->isAllChecked());
        tables.checks.at(0)->setChecked(false); // mixed: it stays
        QVERIFY(tables.header->isAllChecked());
        tables.checks.at(1)->setChecked(false);
        QVERIFY(!tables.header->isAllChecked());
    }

    void noRows()
    {
        Tables tables({});
        tables.header->setAllChecked(true);
        tables.update();
        QVERIFY(!tables.header->isAllChecked());
        QCOMPARE(tables.status.rowCount(), 0);
    }

    void headerChecksAll()
    {
        Tables tables({QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")});
        tables.sources.resize(300, 200);
        tables.sources.show();
        QTest::mousePress(tables.header->viewport(), Qt::LeftButton, {}, QPoint(8, 12));
        QCOMPARE(tables.status.rowCount(), 3);
        QVERIFY(tables.header->isAllChecked());
        QTest::mousePress(tables.header->viewport(), Qt::LeftButton, {}, QPoint(8, 12));
        QCOMPARE(tables.status.rowCount(), 0);
        QVERIFY(!tables.header->isAllChecked());
    }

    void keyboard()
    {
        Tables tables({QStringLiteral("A"), QStringLiteral("B")});
        tables.sources.setCurrentCell(0, 2);
        QTest::keyClick(&tables.sources, Qt::Key_Down);
        QTest::keyClick(&tables.sources, Qt::Key_Space);
        QVERIFY(!tables.checks.at(0)->isChecked());
        QVERIFY(tables.checks.at(1)->isChecked());
        QTest::keyClick(&tables.sources, Qt::Key_A, Qt::ControlModifier);
        QVERIFY(tables.checks.at(0)->isChecked());
        QVERIFY(tables.checks.at(1)->isChecked());
        QTest::keyClick(&tables.sources, Qt::Key_Space);
        QVERIFY(!tables.checks.at(1)->isChecked());
        for (const QCheckBox *check : qAsConst(tables.checks))
            QCOMPARE(check->focusPolicy(), Qt::NoFocus);
    }

    void keyboardWithoutBoxes()
    {
        QtCustomTableWidget table;
        setUpDetailTable(&table);
        table.setRowCount(1);
        fillDetailRow(&table, 0, QStringLiteral("A"), QString());
        table.setCurrentCell(0, 0);
        QTest::keyClick(&table, Qt::Key_Space);
        QTest::keyClick(&table, Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(table.selectedItems().size(), 3);
    }
};

QTEST_MAIN(TestQtCustomTableWidget)
#include "tst_qtcustomtablewidget.moc"
