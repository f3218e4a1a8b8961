#pragma once

#include <QObject>
#include <QRegion>

class QWidget;

// Gathers what a widget paints: the union of the regions of its paint events and their
// number, so that a test can tell which cells a change repainted and a benchmark that its
// figure includes the repaint. Its holder owns it; it may outlive the widget.
class PaintRecorder : public QObject
{
public:
    explicit PaintRecorder(QWidget *widget);

    QRegion painted() const { return m_painted; }
    int paints() const { return m_paints; }
    void clear();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QRegion m_painted;
    int m_paints = 0;
};
