#pragma once

#include <QFrame>
#include <QList>
#include <QStringList>

class QLabel;

// The floating list of the rules a new password must meet, each marked met or not. It
// stands beside the window of the password fields and never takes the focus.
class PasswordCriteriaPanel : public QFrame
{
    Q_OBJECT
public:
    // The key that stands for "both fields hold the same text" next to the policy's keys.
    static const QString Match;

    explicit PasswordCriteriaPanel(QWidget *parent);

    // One line per key, in this order, with its text.
    void setCriteria(const QList<QPair<QString, QString>> &criteria);
    // Marks every criterion met except the keys in `unmet`.
    void setUnmet(const QStringList &unmet);
    bool isMet(const QString &key) const;

private:
    struct Line
    {
        QString key;
        QLabel *icon = nullptr;
        QLabel *text = nullptr;
        bool met = false;
    };
    QList<Line> m_lines;
};
