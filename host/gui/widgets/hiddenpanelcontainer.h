#pragma once

#include <QFrame>
#include <QList>

class HiddenPanel;
class QSpacerItem;

// The side column of a screen: HiddenPanels one under the other. The panels come from a
// form's vertical layout or from addPanel(). When every panel is folded, the titles stay
// at the top instead of spreading over the column.
class HiddenPanelContainer : public QFrame
{
    Q_OBJECT
public:
    explicit HiddenPanelContainer(QWidget *parent = nullptr);

    // Adds a panel at the bottom, making a vertical layout if there is none yet.
    void addPanel(HiddenPanel *panel);
    QList<HiddenPanel *> panels() const;

protected:
    void childEvent(QChildEvent *event) override;

private:
    void watchPanel(HiddenPanel *panel);
    void updateFiller();

    QSpacerItem *m_filler = nullptr;
};
