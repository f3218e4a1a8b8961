#pragma once

#include <host/gui/widgets/messagewidget.h>
#include <host/gui/widgets/plugintab.h>

#include <QList>
#include <QMainWindow>
#include <QPointer>

// The main screen of a plugin, shown by the studio as one or more tabs. Besides the frame
// of a main window it offers passing messages: a popup stands over the bottom right of the
// screen, goes away after its time or on a click, and several stack downwards.
class PluginWidget : public QMainWindow
{
    Q_OBJECT
public:
    // How long a popup stays when no time is given, in milliseconds.
    static constexpr int DefaultPopupTimeout = 5000;

    explicit PluginWidget(QWidget *parent = nullptr);
    ~PluginWidget() override;

    // The popups shown now, oldest first.
    QList<MessageWidget *> popups() const;

public slots:
    // What the studio calls on a screen; slots, so that it may also call them by name.
    // Whether the logged-in operator may see this screen at all.
    virtual bool canShow();
    // The help topic of the screen; none by default.
    virtual QString defaultHelpContext() const;
    // The studio has shown the screen or one of its tabs.
    virtual void activated();
    // The studio switches to the tab of that index (of tabList()). A screen of one tab can
    // leave it: by default it calls activated().
    virtual void onTabActivated(int index);
    // The tabs the studio lists for this screen.
    virtual QList<PLUGIN_TAB> tabList();
    // The studio has placed the widget; builds what needs the studio's services.
    virtual void insertedToInterface();
    // A passing message; `msecs` 0 takes DefaultPopupTimeout.
    void showPopupMessage(const QString &text,
                          MessageWidget::Icon icon = MessageWidget::Information, int msecs = 0);
    void showPopupCriticalMessage(const QString &text, int msecs = 0);

signals:
    // The studio has left the screen.
    void deactivate();

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void dismissPopup(MessageWidget *popup);
    void layoutPopups();

    QList<QPointer<MessageWidget>> m_popups;
};
