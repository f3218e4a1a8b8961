#pragma once

#include <QMargins>
#include <QSize>
#include <QStyledItemDelegate>

// The item painter of the studio's lists and trees. A cell is laid out from the left: the
// check box if the item has one, the icon (drawIcon), the name (drawName) and, at the right
// edge, the status icons (drawStatusIcons), inside the margins and with `spacing()` between
// the parts. Subclasses replace the parts they draw differently and keep the rest.
class StyledItemDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    explicit StyledItemDelegate(QObject *parent = nullptr);
    StyledItemDelegate(const QMargins &margins, QObject *parent = nullptr);

    void setIconSize(int width, int height);
    QSize iconSize() const { return m_iconSize; }
    void setSpacing(int spacing);
    // Where the name stands in the height of its cell: centred (the default), or on the
    // cell's first line (Qt::AlignTop) for delegates whose own columns draw there, so that
    // all texts of a row share one baseline.
    void setNameVerticalAlignment(Qt::Alignment alignment);

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

    // Fills the cell with the item's own background brush, if it has one.
    virtual void drawBackground(QPainter *painter, const QStyleOptionViewItem &option,
                                const QModelIndex &index) const;
    // Draws the selection and hover look of the style, and leaves the painter with the font of
    // the item and the pen of its text (highlighted text on a selected row, grey when disabled).
    virtual void drawStyledBackground(QPainter *painter, const QStyleOptionViewItem &option,
                                      const QModelIndex &index) const;
    // Draws the item's decoration centred in `rect`; returns the width it took, 0 for none.
    virtual int drawIcon(QPainter *painter, const QModelIndex &index, const QRect &rect) const;
    // Draws the status icons right-aligned in `rect`; returns the width they took. The base
    // has none.
    virtual int drawStatusIcons(QPainter *painter, const QModelIndex &index,
                                const QRect &rect) const;
    // Draws name(index) elided into `rect`, vertically as setNameVerticalAlignment says.
    virtual void drawName(QPainter *painter, const QStyleOptionViewItem &option,
                          const QModelIndex &index, const QRect &rect) const;
    // The text of the item: the text shown (role 258) where the model gives one, else its
    // display text.
    virtual QString name(const QModelIndex &index) const;
    // The width the icon of an item takes; 0 if the item has none.
    virtual int iconWidth(const QModelIndex &index) const;
    // The room kept at the right for status icons; none in the base.
    virtual int statusIconWidth(const QModelIndex &index) const;

    virtual int leftMargin() const { return m_margins.left(); }
    virtual int rightMargin() const { return m_margins.right(); }
    virtual int topMargin() const { return m_margins.top(); }
    virtual int bottomMargin() const { return m_margins.bottom(); }
    virtual int spacing() const { return m_spacing; }

    // Where the check box of an item stands in `option.rect`; null if it has none.
    QRect checkRect(const QStyleOptionViewItem &option, const QModelIndex &index) const;

protected:
    bool editorEvent(QEvent *event, QAbstractItemModel *model, const QStyleOptionViewItem &option,
                     const QModelIndex &index) override;

private:
    QMargins m_margins;
    QSize m_iconSize{16, 16};
    int m_spacing = 4;
    Qt::Alignment m_nameVerticalAlignment = Qt::AlignVCenter;
};
