#pragma once

#include <QObject>
#include <QTimer>

#include <functional>

class QWidget;

// Answers the next modal window (a dialog run by exec(), a message box) as soon as it is
// the active modal widget: the handler gets it from the event loop and must close it.
class ModalAnswerer : public QObject
{
    Q_OBJECT
public:
    using Handler = std::function<void(QWidget *modal)>;

    explicit ModalAnswerer(Handler handler, QObject *parent = nullptr);
    bool answered() const { return m_answered; }

private:
    void poll();

    QTimer m_timer;
    Handler m_handler;
    bool m_answered = false;
};
