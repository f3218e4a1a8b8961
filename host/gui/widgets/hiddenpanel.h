#pragma once

#include <QFrame>

class QLabel;
class QToolButton;
class QVBoxLayout;

// A titled panel of a side column. A click on its title folds it to the title alone and
// back; a panel whose title is hidden can't be folded.
class HiddenPanel : public QFrame
{
    Q_OBJECT
public:
    explicit HiddenPanel(QWidget *parent = nullptr);

    QString title() const;
    void setTitle(const QString &title);
    void setIcon(const QIcon &icon);
    // Takes the title bar away; the content stays and fills the panel.
    void hideTitle();
    bool isTitleVisible() const;
    // Puts a widget under the ones already there and takes ownership of it.
    void addWidget(QWidget *widget);

    bool isCollapsed() const { return m_collapsed; }

public slots:
    void setCollapsed(bool collapsed);

signals:
    void collapsedChanged(bool collapsed);

private:
    QWidget *m_titleBar = nullptr;
    QToolButton *m_foldButton = nullptr;
    QLabel *m_iconLabel = nullptr;
    QLabel *m_titleLabel = nullptr;
    QWidget *m_content = nullptr;
    QVBoxLayout *m_contentLayout = nullptr;
    bool m_collapsed = false;
};
