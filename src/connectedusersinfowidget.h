#pragma once

#include <QList>
#include <QModelIndex>
#include <QWidget>

class QTextBrowser;

// The read-only card beside the sessions table. For exactly one selected session it shows who
// the user is, from the local store, and the session's values, from the row of
// ConnectedUsersModel; for none or several it stays empty.
class ConnectedUsersInfoWidget : public QWidget
{
    Q_OBJECT
public:
    explicit ConnectedUsersInfoWidget(QWidget *parent = nullptr);

    // `indexes` are of ConnectedUsersModel itself, not of a proxy over it. They are kept only
    // until the model's next reset; the owner sets them anew after each change of selection.
    void setCurrent(const QList<QModelIndex> &indexes);
    void updateCurrent();
    void showConnectedUsersInfo(const QModelIndex &index) const;

private:
    QTextBrowser *m_browser = nullptr;
    QList<QModelIndex> m_current;
};
