#pragma once

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <functional>

class QWidget;

// Answers the next modal window (a dialog run by exec(), a message box) as soon as it is
// the active modal widget: the handler gets it from the event loop and must close it. A modal
// window already in front when the answerer is made is passed over.
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
    QPointer<QWidget> m_alreadyOpen;
    bool m_answered = false;
};
