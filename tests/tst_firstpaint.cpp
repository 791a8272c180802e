#include "app/firstpaint.h"
#include "tests/support/testbase.h"

#include <QLoggingCategory>
#include <QtTest>

namespace {

QStringList events;

void keep(QtMsgType, const QMessageLogContext &context, const QString &text)
{
    events.append(QLatin1String(context.category) + QLatin1String(": ") + text);
}

class PaintedWindow final : public QWidget {
protected:
    void paintEvent(QPaintEvent *) override { events.append(QStringLiteral("paint")); }
};

} // namespace

class TestFirstPaint final : public TestBase {
    Q_OBJECT

private slots:
    void isToldOnceAndAfterThePaint();
    void isNotToldUnlessAskedFor();

private:
    void showTwice(bool told);
};

void TestFirstPaint::showTwice(bool told)
{
    events.clear();
    QLoggingCategory::setFilterRules(
        QStringLiteral("vexa.startup.debug=%1").arg(QLatin1String(told ? "true" : "false")));
    const QtMessageHandler former = qInstallMessageHandler(&keep);
    PaintedWindow window;
    window.resize(100, 100);
    window.show();
    logFirstPaint(&window);
    bool exposed = QTest::qWaitForWindowExposed(&window);
    QCoreApplication::processEvents();
    window.hide();
    window.show();
    exposed = QTest::qWaitForWindowExposed(&window) && exposed;
    QCoreApplication::processEvents();
    qInstallMessageHandler(former);
    QLoggingCategory::setFilterRules(QString());
    QVERIFY(exposed);
}

void TestFirstPaint::isToldOnceAndAfterThePaint()
{
    const QString line = QStringLiteral("vexa.startup: window painted");
    showTwice(true);
    QCOMPARE(events.count(line), 1);
    QVERIFY(events.indexOf(QStringLiteral("paint")) >= 0);
    QVERIFY(events.indexOf(QStringLiteral("paint")) < events.indexOf(line));
}

void TestFirstPaint::isNotToldUnlessAskedFor()
{
    showTwice(false);
    QVERIFY(events.contains(QStringLiteral("paint")));
    QVERIFY(events.filter(QStringLiteral("vexa.startup")).isEmpty());
}

QTEST_MAIN(TestFirstPaint)
#include "tst_firstpaint.moc"
