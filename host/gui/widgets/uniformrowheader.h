#pragma once

#include <QHeaderView>

// The row header of a table whose rows are all one line high: it measures the contents of one
// section and gives that size for every section, so that fitting 10,000 rows to their
// contents doesn't lay out 10,000 labels. The widest label is taken to be the last one
// (row numbers grow).
class UniformRowHeader : public QHeaderView
{
    Q_OBJECT
public:
    explicit UniformRowHeader(QWidget *parent = nullptr);

    // Measures anew on the next request, after the rows changed.
    void forgetSize() { m_size = QSize(); }

protected:
    QSize sectionSizeFromContents(int logicalIndex) const override;

private:
    mutable QSize m_size;
};
