#include "mainwindow/previewchoice.h"

#include "charts/videoglpreview.h"

#include <QComboBox>
#include <QSignalBlocker>

namespace {

const QString noneText = QStringLiteral("NONE");

}

PreviewChoice::PreviewChoice(QComboBox *choices, VideoGlPreview *preview, QWidget *wrapper, QWidget *placeholder,
                             QObject *parent)
    : QObject(parent), m_choices(choices), m_preview(preview), m_wrapper(wrapper), m_placeholder(placeholder)
{
    connect(choices, qOverload<int>(&QComboBox::currentIndexChanged), this, [this] { show(); });
}

void PreviewChoice::offer(const QVector<QPair<QString, int>> &sources)
{
    {
        // While the list is made anew there is no choice, or a wrong one.
        const QSignalBlocker blocker(m_choices);
        m_choices->clear();
        m_choices->addItem(noneText, none);
        for (const auto &[text, index] : sources)
            m_choices->addItem(text, index);
        m_choices->setCurrentIndex(sources.isEmpty() ? 0 : 1);
    }
    show();
}

void PreviewChoice::reset()
{
    if (m_choices->count() == 1 && m_choices->itemData(0).isValid() && current() == none)
        return;
    offer({});
}

void PreviewChoice::chooseNone()
{
    m_choices->setCurrentIndex(0);
    show();
}

int PreviewChoice::current() const
{
    bool known = false;
    const int index = m_choices->currentData().toInt(&known);
    return known ? index : none;
}

void PreviewChoice::show()
{
    const int index = current();
    m_preview->setSource(index);
    m_placeholder->setVisible(index == none);
    m_wrapper->setVisible(index != none);
    if (index != none)
        m_preview->update();
    emit shown(index);
}
