#pragma once

#include <QObject>
#include <QPair>
#include <QString>
#include <QVector>

class QComboBox;
class QWidget;
class VideoGlPreview;

/// The choice of the source whose video is shown: fills the combo box, and shows either the preview or
/// the placeholder. GUI thread; owns none of the widgets, which have to live as long.
class PreviewChoice final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PreviewChoice)

public:
    static constexpr int none = -1;

    /// wrapper holds the preview, placeholder stands in its place.
    PreviewChoice(QComboBox *choices, VideoGlPreview *preview, QWidget *wrapper, QWidget *placeholder,
                  QObject *parent = nullptr);

    /// "NONE" and then these texts with their source indexes; the first of them is chosen.
    void offer(const QVector<QPair<QString, int>> &sources);
    /// Only "NONE" is left. Does nothing when that is so already.
    void reset();
    /// Chooses "NONE"; the rest stays.
    void chooseNone();
    /// Source index of the choice, or none.
    int current() const;

signals:
    /// The preview shows this source index, or none, from now on. Also emitted when the choice is confirmed.
    void shown(int sourceIndex);

private:
    void show();

    QComboBox *m_choices;
    VideoGlPreview *m_preview;
    QWidget *m_wrapper;
    QWidget *m_placeholder;
};
