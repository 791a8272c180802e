#include "mainwindow/figures.h"

#include "mainwindow/resulttables.h"
#include "mainwindow/videoformat.h"
#include "ui_ndiwindow.h"

namespace {

const QString widestRate = QStringLiteral("8.88888e+88fps");
const QString widestInterval = QStringLiteral("8888888888 ms");

/// While one lives, changes of a widget ask for no repaint. The painting itself goes on as usual afterwards.
class UpdatesHeld final {
    Q_DISABLE_COPY_MOVE(UpdatesHeld)

public:
    explicit UpdatesHeld(QWidget *widget) : m_widget(widget), m_former(widget->testAttribute(Qt::WA_UpdatesDisabled))
    {
        // QWidget::setUpdatesEnabled() repaints the widget when updates come back.
        m_widget->setAttribute(Qt::WA_UpdatesDisabled);
    }
    ~UpdatesHeld() { m_widget->setAttribute(Qt::WA_UpdatesDisabled, m_former); }

private:
    QWidget *m_widget;
    bool m_former;
};

void fixSize(QLabel *label, const QString &widest)
{
    const QString text = label->text();
    label->setTextFormat(Qt::PlainText);
    label->ensurePolished(); // the font is the style sheet's
    label->setText(widest);
    label->setFixedSize(label->sizeHint());
    label->setText(text);
}

void setTextOnly(QLabel *label, const QString &text)
{
    const UpdatesHeld held(label);
    label->setText(text);
}

} // namespace

QString sixDigits(double number)
{
    return QString::number(number, 'g', 6);
}

FigurePanel::FigurePanel(const Ui::NDIWindow &form) : m_form(form)
{
    fixSize(form.L4, widestRate);
    fixSize(form.L8, widestInterval);
    QObject::connect(&m_pacer, &RepaintPacer::due, form.tblStatus, [this] {
        m_form.L4->update();
        m_form.L8->update();
        updateStatusFigures(m_form.tblStatus);
    });
}

void FigurePanel::show(int statusRow, const Figures &figures)
{
    const QString rate = sixDigits(figures.fps) + QStringLiteral("fps");
    setTextOnly(m_form.L4, rate);
    setTextOnly(m_form.L8, QStringLiteral("%1 ms").arg(figures.intervalMs));
    // These stay the same from frame to frame, and QLabel does nothing then.
    m_form.label_videoFormat->setText(formatName(figures.fourCC));
    m_form.label_videoFPS->setText(sixDigits(figures.nominalFps));
    m_form.label_videoHeight->setText(QString::number(figures.height));
    m_form.label_videoWidth->setText(QString::number(figures.width));
    fillStatusRow(statusRow, rate, QString::number(figures.intervalMs) + QStringLiteral("ms"));
}

void FigurePanel::showNoVideo(int statusRow)
{
    fillStatusRow(statusRow, QStringLiteral("0fps"), QStringLiteral("0ms"));
}

void FigurePanel::fillStatusRow(int row, const QString &rate, const QString &interval)
{
    {
        const UpdatesHeld held(m_form.tblStatus->viewport());
        fillStatusFigures(m_form.tblStatus, row, rate, interval);
    }
    m_pacer.requestForMeasurement();
}
