#include "probes/benchmarkdlg.h"

#include "probes/benchmarkparser.h"
#include "widgets/dialogtitlebar.h"
#include "widgets/qprogressindicator.h"

#include <QBoxLayout>
#include <QCoreApplication>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QStyle>

namespace {

constexpr int startDelayMs = 2000;
constexpr int mostCores = 24;  // on the bar
constexpr int pageMargin = 66; // px, so that the notice has two lines of about the same length

const char *const bodyStyle = "QWidget#widBodyWrapper{\n\tbackground-color: #202020;\n"
                              "\tborder-bottom-left-radius: 5px; border-bottom-right-radius: 5px;\n}"
                              "QLabel{\n\tbackground-color: transparent;\n}";
const char *const noticeStyle = "QLabel{\n\tfont: 500 14px \"Kumbh Sans\";\n\tcolor: #c8c8c8;\n}";
const char *const progressStyle = "QLabel{\n\tfont: 600 16px \"Kumbh Sans\";\n\tcolor: #15cfbb;\n}";
const char *const captionStyle = "QLabel{\n\tfont: 600 16px \"Kumbh Sans\";\n\tcolor: #ffffff;\n}";
const char *const valueStyle = "QLabel{\n\tfont: 500 14px \"Kumbh Sans\";\n\tcolor: #ffffff;\n}";
const char *const barStyle = "QProgressBar {background-color: #202020;color: #ffffff;border-style: outset;"
                             "border-width: 2px;border-color: #74c8ff;border-radius: 7px;"
                             "font: 500 14px \"Kumbh Sans\";}";
const char *const coresChunk = "QProgressBar::chunk {background-color: #15cfbb; }";

QString barStyleWith(const char *chunkRule)
{
    return QLatin1String(barStyle) + QLatin1String(chunkRule);
}

const char *streamsChunk(BenchmarkRating rating)
{
    switch (rating) {
    case BenchmarkRating::High:
        return "QProgressBar::chunk {background-color: #10ff10; }";
    case BenchmarkRating::Medium:
        return "QProgressBar::chunk {background-color: #ff8810; }";
    case BenchmarkRating::Low:
        break;
    }
    return "QProgressBar::chunk {background-color: #ff1010; }";
}

void setStyleOf(QProgressBar *bar, const QString &styleSheet)
{
    bar->setStyleSheet(styleSheet);
    bar->style()->unpolish(bar);
    bar->style()->polish(bar);
}

QLabel *makeLabel(const QString &name, const QString &text, const char *style, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    label->setObjectName(name);
    label->setStyleSheet(QLatin1String(style));
    label->setAlignment(Qt::AlignCenter);
    return label;
}

QLabel *makeNotice(const QString &name, QWidget *parent)
{
    QLabel *notice = makeLabel(name,
                               BenchmarkDlg::tr("PLEASE NOTE. Your computer will be temporarily unresponsive while the "
                                                "NDI Benchmark test completes."),
                               noticeStyle, parent);
    notice->setWordWrap(true);
    return notice;
}

QProgressBar *makeProgressBar(const QString &name, QWidget *parent)
{
    auto *bar = new QProgressBar(parent);
    bar->setObjectName(name);
    bar->setOrientation(Qt::Vertical);
    bar->setAlignment(Qt::AlignCenter);
    bar->setFormat(QStringLiteral("%v"));
    return bar;
}

} // namespace

BenchmarkDlg::BenchmarkDlg(int toolTimeoutMs) : m_toolTimeoutMs(toolTimeoutMs), m_startDelay(this)
{
    setWindowFlags(Qt::FramelessWindowHint);
    setAttribute(Qt::WA_TranslucentBackground); // else the rounded corners are black
    setWindowTitle(QStringLiteral("Dialog"));
    setStyleSheet(dialogStyle());
    auto *body = new QWidget(this);
    body->setObjectName(QStringLiteral("widBodyWrapper"));
    body->setStyleSheet(QLatin1String(bodyStyle));
    m_startPage = makeStartPage();
    m_progressPage = makeProgressPage();
    m_resultPage = makeResultPage();
    auto *bodyLayout = new QVBoxLayout(body);
    bodyLayout->setContentsMargins(40, 24, 40, 24);
    for (QWidget *page : {m_startPage, m_progressPage, m_resultPage})
        bodyLayout->addWidget(page);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->setSizeConstraint(QLayout::SetNoConstraint); // its size is given
    const DialogTitleBar titleBar = makeDialogTitleBar(this);
    titleBar.title->setText(tr("BENCHMARK BOX"));
    layout->addWidget(titleBar.bar);
    layout->addWidget(body, 1);
    resize(654, 397);

    m_spinner->startAnimation();
    m_spinner->setColor(QColor(21, 207, 187));
    m_progressPage->hide();
    m_resultPage->hide();
    m_startPage->show();

    m_startDelay.setObjectName(QStringLiteral("startDelay"));
    m_startDelay.setSingleShot(true);
    m_startDelay.setInterval(startDelayMs);
    connect(&m_startDelay, &QTimer::timeout, this, &BenchmarkDlg::startBenchmark);
    connect(this, &QDialog::finished, &m_startDelay, &QTimer::stop);
}

QWidget *BenchmarkDlg::makeStartPage()
{
    auto *page = new QWidget(this);
    page->setObjectName(QStringLiteral("startWrapper"));
    auto *start = new QPushButton(tr("Start"), page);
    start->setObjectName(QStringLiteral("btn_test"));
    start->setStyleSheet(mainButtonStyle(QStringLiteral("bold 16px")));
    start->setMinimumWidth(140);
    start->setDefault(true);
    connect(start, &QPushButton::clicked, this, &BenchmarkDlg::showProgressPage);
    auto *layout = new QVBoxLayout(page);
    layout->setContentsMargins(pageMargin, 0, pageMargin, 0);
    layout->setSpacing(28);
    layout->addStretch(1);
    layout->addWidget(start, 0, Qt::AlignHCenter);
    layout->addWidget(makeNotice(QStringLiteral("lblText_4"), page));
    layout->addStretch(1);
    return page;
}

QWidget *BenchmarkDlg::makeProgressPage()
{
    auto *page = new QWidget(this);
    page->setObjectName(QStringLiteral("progWrapper"));
    m_spinner = new QProgressIndicator(page);
    m_spinner->setObjectName(QStringLiteral("waiting_spinner"));
    m_spinner->setFixedSize(72, 72);
    m_spinner->setAccessibleName(tr("Busy"));
    auto *layout = new QVBoxLayout(page);
    layout->setContentsMargins(pageMargin, 0, pageMargin, 0);
    layout->setSpacing(28);
    layout->addStretch(1);
    layout->addWidget(m_spinner, 0, Qt::AlignHCenter);
    layout->addWidget(makeNotice(QStringLiteral("lblText_5"), page));
    layout->addWidget(makeLabel(QStringLiteral("lblText_3"), tr("TESTING IN PROGRESS ..."), progressStyle, page));
    layout->addStretch(1);
    return page;
}

QWidget *BenchmarkDlg::makeResultPage()
{
    auto *page = new QWidget(this);
    page->setObjectName(QStringLiteral("widBenchmarkInfo"));
    m_coresBar = makeProgressBar(QStringLiteral("perCPU"), page);
    m_coresBar->setRange(0, mostCores);
    m_streamsBar = makeProgressBar(QStringLiteral("perFPS"), page);
    m_coresLabel = makeLabel(QStringLiteral("lblCoresValue"), tr("16 Cores"), valueStyle, page);
    m_streamsLabel = makeLabel(QStringLiteral("lblFPSValue"), tr("38 Streams of 1080p"), valueStyle, page);
    auto *layout = new QHBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(
        makeBar(m_coresBar, makeLabel(QStringLiteral("lblText"), tr("CPU"), captionStyle, page), m_coresLabel));
    layout->addWidget(
        makeBar(m_streamsBar, makeLabel(QStringLiteral("lblText_2"), tr("FPS"), captionStyle, page), m_streamsLabel));
    // A bar without a value would be drawn empty of its text; the first style is that of no result.
    m_coresBar->setValue(0);
    m_streamsBar->setValue(0);
    setStyleOf(m_coresBar, barStyleWith(coresChunk));
    setStyleOf(m_streamsBar, barStyleWith(streamsChunk(rateStreams(0))));
    return page;
}

QWidget *BenchmarkDlg::makeBar(QProgressBar *bar, QLabel *caption, QLabel *value)
{
    auto *column = new QWidget(this);
    bar->setMinimumWidth(72);
    bar->setAccessibleName(caption->text());
    auto *layout = new QVBoxLayout(column);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(10);
    layout->addWidget(caption);
    layout->addWidget(bar, 1, Qt::AlignHCenter);
    layout->addWidget(value);
    return column;
}

void BenchmarkDlg::showProgressPage()
{
    m_progressPage->show();
    m_startPage->hide();
    m_startDelay.start();
}

void BenchmarkDlg::startBenchmark()
{
    const QString tool = findBenchmarkTool(QCoreApplication::applicationDirPath(), benchmarkToolName());
    const BenchmarkReport report = parseBenchmarkOutput(runBenchmarkTool(tool, m_toolTimeoutMs));
    setCpuCores(report.cores);
    setFPSValue(report.wholeStreams());
    m_startPage->hide(); // called without the button, it is still there
    m_progressPage->hide();
    m_resultPage->show();
}

void BenchmarkDlg::setCpuCores(int value)
{
    setStyleOf(m_coresBar, barStyleWith(coresChunk));
    m_coresBar->setValue(value);
    m_coresLabel->setText(tr("%1 Cores").arg(value));
}

void BenchmarkDlg::setFPSValue(int value)
{
    setStyleOf(m_streamsBar, barStyleWith(streamsChunk(rateStreams(value))));
    m_streamsBar->setValue(value);
    m_streamsLabel->setText(tr("%1 Streams of 1080p").arg(value));
}
