#include "modalanswerer.h"

#include <QApplication>
#include <QWidget>

ModalAnswerer::ModalAnswerer(Handler handler, QObject *parent)
    : QObject(parent)
    , m_handler(std::move(handler))
    , m_alreadyOpen(QApplication::activeModalWidget())
{
    // A modal loop runs its own event loop, so a timer is how a test gets a word in.
    m_timer.setInterval(10);
    connect(&m_timer, &QTimer::timeout, this, &ModalAnswerer::poll);
    m_timer.start();
}

void ModalAnswerer::poll()
{
    QWidget *modal = QApplication::activeModalWidget();
    // The window in front when the answerer was made (a modal wizard, say) is not the next.
    if (!modal || !modal->isVisible() || modal == m_alreadyOpen)
        return;
    m_timer.stop();
    m_answered = true;
    m_handler(modal);
}
