#pragma once

class QEvent;
class QString;
class QWidget;

/// Answers a tool tip event of a widget that does not show all of its plain text: with that text, and the widget's own
/// tool tip below it. GUI thread.
void showWholeText(QEvent *event, const QString &text, QWidget *widget);
