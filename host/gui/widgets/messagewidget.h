#pragma once

#include <KMessageWidget>

// A message line: a coloured bar with an icon and a text that wraps. Used as the passing
// popups of a screen and as the message line of dialogs. A click anywhere on it emits
// clicked().
class MessageWidget : public KMessageWidget
{
    Q_OBJECT
public:
    enum Icon {
        Information = 0,
        Positive = 1,
        Warning = 2,
        Critical = 3,
    };
    Q_ENUM(Icon)

    explicit MessageWidget(QWidget *parent = nullptr);
    MessageWidget(const QString &text, Icon icon, QWidget *parent = nullptr);

    Icon messageIcon() const { return m_icon; }
    // Sets the colour and the icon of the kind of message.
    void setMessageIcon(Icon icon);

signals:
    void clicked();

protected:
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    Icon m_icon = Information;
};
