#pragma once

#include <QDialog>
#include <QList>
#include <QPointer>

class MessageWidget;
class QAction;
class QColor;
class QDialogButtonBox;
class QPushButton;
class QTabWidget;
class ZRActionsToolBar;

// A property dialog of tabs. Edits on a tab raise the Save button (showSaveButton); the
// button emits save() and stays until the owner calls saved(), whether the save was
// applied or refused. A message line under the tabs reports outcomes. The tool bar over the
// tabs holds the dialog's own actions and, while a tab is shown, the actions that tab carries
// (QWidget::addAction on the tab).
class TabbedDialog : public QDialog
{
    Q_OBJECT
public:
    explicit TabbedDialog(QWidget *parent = nullptr);

    // Adds a page; returns its index.
    int addTab(QWidget *page, const QString &title);
    int addTab(QWidget *page, const QIcon &icon, const QString &title);
    QTabWidget *tabWidget() const { return m_tabs; }

    // The dialog's tool bar, hidden until showToolBar() or until a tab with actions shows.
    ZRActionsToolBar *toolBar() const { return m_toolBar; }
    void showToolBar();

    bool isSaveButtonShown() const;
    QPushButton *saveButton() const { return m_saveButton; }
    MessageWidget *messageLine() const { return m_message; }

public slots:
    void showMessage(const QString &text);
    // The text drawn in `color`, for a line that must stand out from the progress messages
    // (the reason a server gave for a refusal).
    void showMessage(const QString &text, const QColor &color);
    void showCriticalMessage(const QString &text);
    void reject() override;
    // The save has ended: the Save button goes away.
    virtual void saved();
    // The page in front has changed: its actions take the place of the last page's.
    virtual void menuPageSelected();
    virtual void showSaveButton();

signals:
    void save();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void updateToolBarVisibility();

    QTabWidget *m_tabs = nullptr;
    ZRActionsToolBar *m_toolBar = nullptr;
    MessageWidget *m_message = nullptr;
    QDialogButtonBox *m_buttons = nullptr;
    QPushButton *m_saveButton = nullptr;
    QAction *m_pageActionsSeparator = nullptr;
    QList<QPointer<QAction>> m_pageActions; // the shown page's actions, now on the tool bar
    bool m_toolBarRequested = false;
};
