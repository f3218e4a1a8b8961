#include "uniformrowheader.h"

UniformRowHeader::UniformRowHeader(QWidget *parent)
    : QHeaderView(Qt::Vertical, parent)
{
    // As QTableView sets up its own row header.
    setSectionsClickable(true);
    setHighlightSections(true);
    // Fixed now: worked out from the style and font, the default is computed anew for every
    // section a fit measures.
    setMinimumSectionSize(minimumSectionSize());
}

QSize UniformRowHeader::sectionSizeFromContents(int logicalIndex) const
{
    if (!m_size.isValid())
        m_size = QHeaderView::sectionSizeFromContents(count() > 0 ? count() - 1 : logicalIndex);
    return m_size;
}
