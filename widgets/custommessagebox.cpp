#include "widgets/custommessagebox.h"

#include "widgets/dialogtitlebar.h"

#include <QBoxLayout>
#include <QFile>
#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QShowEvent>
#include <QToolButton>

namespace {

constexpr int leastWidth = 400;       // px
constexpr int comfortableWidth = 640; // px
constexpr int bodyMargin = 28;        // px, left and right of the texts
constexpr int rowSpacing = 12;        // px, between texts beside each other
constexpr double mainPointSize = 14.0;
constexpr double furtherPointSize = 12.0;
constexpr int errorPointSize = 20;

const char *const bodyStyle = "QWidget#widBodyWrapper{\n\tbackground-color: #202020;\n}"
                              "QLabel{\n\tbackground-color: transparent;\n}"; // whatever the parent's style says
const char *const bottomStyle = "QWidget#widBottom{\n\tbackground-color: #202020;\n"
                                "\tborder-bottom-left-radius: 5px; border-bottom-right-radius: 5px;\n}";
const char *const logoStyle = "QToolButton{\n\tbackground-color: transparent; border: none;\n}";
const char *const textStyle = "QLabel { color : #ffffff; }";
const char *const errorTextStyle = "QLabel { color : red; }";

/// Width of the longest line of a text that is not wrapped, and of its longest word.
struct TextWidths {
    int line = 0;
    int word = 0;
};

TextWidths widthsOf(const QLabel &label)
{
    TextWidths widths;
    label.ensurePolished();
    const QFontMetrics metrics(label.font());
    const QStringList lines = label.text().split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        widths.line = qMax(widths.line, metrics.horizontalAdvance(line));
        const QStringList words = line.split(QLatin1Char(' '), Qt::SkipEmptyParts);
        for (const QString &word : words)
            widths.word = qMax(widths.word, metrics.horizontalAdvance(word));
    }
    constexpr int slack = 4; // a text exactly as wide as its label may still be wrapped
    widths.line += slack;
    widths.word += slack;
    return widths;
}

/// Two texts beside each other need both widths.
TextWidths widthsOfRow(const QLabel &left, const QLabel &right)
{
    TextWidths row;
    for (const QLabel *label : {&left, &right}) {
        if (label->text().isEmpty())
            continue;
        const TextWidths widths = widthsOf(*label);
        row.line += widths.line + (row.line > 0 ? rowSpacing : 0);
        row.word += widths.word + (row.word > 0 ? rowSpacing : 0);
    }
    return row;
}

void setTextOf(QLabel *label, const QString &text)
{
    label->setText(text);
    label->setVisible(!text.isEmpty());
}

} // namespace

QPoint centeredPosition(const QSize &window, const QRect &anchor, const QRect &screen)
{
    const int left = anchor.x() + (anchor.width() - window.width()) / 2;
    const int top = anchor.y() + (anchor.height() - window.height()) / 2;
    const int lastLeft = screen.x() + screen.width() - window.width();
    const int lastTop = screen.y() + screen.height() - window.height();
    return {qMax(screen.x(), qMin(left, lastLeft)), qMax(screen.y(), qMin(top, lastTop))};
}

int messageBoxWidth(int textWidth, int wordWidth, int screenWidth)
{
    constexpr int margins = 2 * bodyMargin;
    constexpr int longestLine = comfortableWidth - margins;
    int line = textWidth;
    if (textWidth > longestLine) {
        // Lines of about the same length look better than full ones and a last word; a tenth more,
        // for words that do not fit at the end of a line.
        const int lines = (textWidth + longestLine - 1) / longestLine;
        line = textWidth / lines + textWidth / lines / 10;
    }
    const int wanted = qBound(leastWidth, line + margins, comfortableWidth);
    return qMin(qMax(wanted, wordWidth + margins), screenWidth);
}

CustomMessageBox::CustomMessageBox(QWidget *parent) : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint)
{
    setAttribute(Qt::WA_TranslucentBackground); // else the rounded corners are black
    setStyleSheet(dialogStyle());
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->setSizeConstraint(QLayout::SetNoConstraint); // adjustLayout() has the say, also on a small screen
    const DialogTitleBar titleBar = makeDialogTitleBar(this);
    m_title = titleBar.title;
    layout->addWidget(titleBar.bar);
    layout->addWidget(makeBody(), 1);
    layout->addWidget(makeBottom());

    setTabOrder(m_ok, titleBar.close);
    m_ok->setDefault(true);
    m_ok->setFocus();
    connect(m_ok, &QPushButton::released, this, &QDialog::accept);
}

QWidget *CustomMessageBox::makeBody()
{
    auto *body = new QWidget(this);
    body->setObjectName(QStringLiteral("widBodyWrapper"));
    body->setStyleSheet(QLatin1String(bodyStyle));
    m_logo = new QToolButton(body);
    m_logo->setObjectName(QStringLiteral("btnMsgLogo"));
    m_logo->setStyleSheet(QLatin1String(logoStyle));
    const QString logo = QStringLiteral(":images/Tessaly-VEXA-new-logo.svg");
    if (QFile::exists(logo))
        m_logo->setIcon(QIcon(logo));
    m_logo->setIconSize(QSize(200, 50));
    m_logo->setFixedSize(200, 50);
    m_logo->setFocusPolicy(Qt::NoFocus);
    m_logo->setAttribute(Qt::WA_TransparentForMouseEvents); // a picture, nothing to press
    m_logo->setAccessibleName(tr("Tessaly VEXA"));
    m_main = makeText(QStringLiteral("lblText"), mainPointSize);
    m_text01 = makeText(QStringLiteral("lblText0_1"), furtherPointSize);
    m_text10 = makeText(QStringLiteral("lblText1_0"), furtherPointSize);
    m_text11 = makeText(QStringLiteral("lblText1_1"), furtherPointSize);

    auto *firstRow = new QHBoxLayout;
    firstRow->setSpacing(rowSpacing);
    firstRow->addWidget(m_main, 1);
    firstRow->addWidget(m_text01, 1);
    auto *secondRow = new QHBoxLayout;
    secondRow->setSpacing(rowSpacing);
    secondRow->addWidget(m_text10, 1);
    secondRow->addWidget(m_text11, 1);
    auto *layout = new QVBoxLayout(body);
    layout->setContentsMargins(bodyMargin, 22, bodyMargin, 14);
    layout->setSpacing(14);
    layout->addWidget(m_logo, 0, Qt::AlignHCenter);
    layout->addLayout(firstRow);
    layout->addLayout(secondRow);
    layout->addStretch(1);
    return body;
}

QWidget *CustomMessageBox::makeBottom()
{
    auto *bottom = new QWidget(this);
    bottom->setObjectName(QStringLiteral("widBottom"));
    bottom->setStyleSheet(QLatin1String(bottomStyle));
    m_ok = new QPushButton(tr("OK"), bottom);
    m_ok->setObjectName(QStringLiteral("btnOk"));
    m_ok->setStyleSheet(mainButtonStyle(QStringLiteral("600 12pt")));
    m_ok->setMinimumWidth(120);
    auto *layout = new QHBoxLayout(bottom);
    layout->setContentsMargins(bodyMargin, 6, bodyMargin, 22);
    layout->addWidget(m_ok, 0, Qt::AlignHCenter);
    return bottom;
}

QLabel *CustomMessageBox::makeText(const QString &name, double pointSize)
{
    auto *label = new QLabel(this);
    label->setObjectName(name);
    label->setStyleSheet(QLatin1String(textStyle));
    QFont font(QStringLiteral("Kumbh Sans"));
    font.setPointSizeF(pointSize);
    label->setFont(font);
    label->setTextFormat(Qt::PlainText);
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    label->hide(); // it has no text yet
    return label;
}

void CustomMessageBox::setTitle(const QString &title)
{
    m_title->setText(title);
    setWindowTitle(title);
}

void CustomMessageBox::setMessage(const QString &main, const QString &text01, const QString &text10,
                                  const QString &text11)
{
    setTextOf(m_main, main);
    setTextOf(m_text01, text01);
    setTextOf(m_text10, text10);
    setTextOf(m_text11, text11);
    // Read out when the box appears.
    QStringList texts{main, text01, text10, text11};
    texts.removeAll(QString());
    setAccessibleDescription(texts.join(QLatin1Char('\n')));
    if (isVisible())
        adjustLayout();
}

void CustomMessageBox::setButtonText(const QString &text)
{
    m_ok->setText(text);
}

void CustomMessageBox::setErrorStyle()
{
    QFont font = m_main->font();
    font.setPointSize(errorPointSize);
    m_main->setFont(font);
    m_main->setStyleSheet(QLatin1String(errorTextStyle));
    m_logo->hide();
    if (isVisible())
        adjustLayout();
}

void CustomMessageBox::adjustLayout()
{
    const QWidget *owner = parentWidget() ? parentWidget()->window() : nullptr;
    const QScreen *shownOn = owner ? owner->screen() : QGuiApplication::primaryScreen();
    if (!shownOn)
        return;
    const QRect room = shownOn->availableGeometry();
    ensurePolished();
    layout()->activate();
    const TextWidths first = widthsOfRow(*m_main, *m_text01);
    const TextWidths second = widthsOfRow(*m_text10, *m_text11);
    const int needed = layout()->totalMinimumSize().width(); // a long title or button text
    const int forTexts = messageBoxWidth(qMax(first.line, second.line), qMax(first.word, second.word), room.width());
    const int boxWidth = qMin(qMax(needed, forTexts), room.width());
    // Without a text nothing in it wraps.
    const int boxHeight =
        layout()->hasHeightForWidth() ? layout()->totalHeightForWidth(boxWidth) : layout()->totalSizeHint().height();
    resize(boxWidth, qMin(boxHeight, room.height()));
    move(centeredPosition(size(), owner && owner->isVisible() ? owner->frameGeometry() : room, room));
}

void CustomMessageBox::showEvent(QShowEvent *event)
{
    if (!event->spontaneous())
        adjustLayout();
    QDialog::showEvent(event);
}
