#include "hiddenpanelcontainer.h"

#include "hiddenpanel.h"

#include <QChildEvent>
#include <QSpacerItem>
#include <QVBoxLayout>

#include <algorithm>

HiddenPanelContainer::HiddenPanelContainer(QWidget *parent)
    : QFrame(parent)
{}

void HiddenPanelContainer::addPanel(HiddenPanel *panel)
{
    auto *box = qobject_cast<QBoxLayout *>(layout());
    if (!box) {
        box = new QVBoxLayout(this);
        box->setContentsMargins(0, 0, 0, 0);
    }
    const int fillerIndex = m_filler ? box->indexOf(m_filler) : -1;
    box->insertWidget(fillerIndex >= 0 ? fillerIndex : box->count(), panel);
    watchPanel(panel);
}

QList<HiddenPanel *> HiddenPanelContainer::panels() const
{
    return findChildren<HiddenPanel *>(QString(), Qt::FindDirectChildrenOnly);
}

void HiddenPanelContainer::childEvent(QChildEvent *event)
{
    QFrame::childEvent(event);
    // A form creates its panels as children first and fills them later; by the time a child
    // is polished it is a complete HiddenPanel.
    if (event->type() == QEvent::ChildPolished) {
        if (auto *panel = qobject_cast<HiddenPanel *>(event->child()))
            watchPanel(panel);
    }
}

void HiddenPanelContainer::watchPanel(HiddenPanel *panel)
{
    connect(panel, &HiddenPanel::collapsedChanged, this, &HiddenPanelContainer::updateFiller,
            Qt::UniqueConnection);
    updateFiller();
}

void HiddenPanelContainer::updateFiller()
{
    auto *box = qobject_cast<QBoxLayout *>(layout());
    if (!box)
        return;
    if (!m_filler) {
        m_filler = new QSpacerItem(0, 0, QSizePolicy::Minimum, QSizePolicy::Minimum);
        box->addItem(m_filler);
    }
    const QList<HiddenPanel *> all = panels();
    const bool allFolded = std::all_of(all.cbegin(), all.cend(),
                                       [](const HiddenPanel *p) { return p->isCollapsed(); });
    m_filler->changeSize(0, 0, QSizePolicy::Minimum,
                         allFolded ? QSizePolicy::Expanding : QSizePolicy::Minimum);
    box->invalidate();
}
