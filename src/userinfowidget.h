#pragma once

#include <shared/roletemplateinfo.h>
#include <shared/types.h>

#include <QList>
#include <QModelIndex>
#include <QWidget>

class QTextBrowser;
class QTextCursor;

// The card of the selected user beside the users lists: name and login, role template,
// identification, state of the account and the linked employee; for several users only their
// number. It reads users from the local store; of the list it takes only the selected uids.
class UserInfoWidget : public QWidget
{
    Q_OBJECT
public:
    explicit UserInfoWidget(QWidget *parent = nullptr);

    QList<zeral::TYPE_ID> uids() const;
    // Takes the uids of the rows (column 0's display value) and redraws.
    void setCurrent(const QList<QModelIndex> &rows);
    // Redraws at once, so that a template's name shows as soon as the table arrives.
    void setRoleTemplates(const QHash<QString, zeral::_ROLETEMPLATE_INFO> &roleTemplates);
    // Redraws the card from the store, always from an empty document.
    void updateCurrent();
    void showUsersInfo(unsigned int uid);
    void showManyUserInfo(int count);

private:
    // The heading of a section on a paragraph of its own, after an empty line.
    void insertHeading(QTextCursor &cursor, const QString &heading) const;
    // A 16 pixel theme icon, a blank and the value, on the current paragraph.
    void insertIconLine(QTextCursor &cursor, const QString &iconName, const QString &text) const;
    QString roleTemplateName(const QString &id) const;

    QTextBrowser *m_browser = nullptr;
    QList<zeral::TYPE_ID> m_uids;
    zeral::ROLETEMPLATES_HASH m_roleTemplates;
};
