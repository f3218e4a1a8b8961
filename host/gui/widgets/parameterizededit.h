#pragma once

#include <QLineEdit>

// A line edit for a parameter of an object. Its border tells the state of the value: normal,
// doubtful or wrong. With highlighting on, the edit judges its own text after every change
// by its validator and by the empty-text rule; a caller may also set the colour itself.
class ParameterizedEdit : public QLineEdit
{
    Q_OBJECT
public:
    enum BorderColor {
        Normal = 0,
        Warning = 1,
        Error = 2,
    };
    Q_ENUM(BorderColor)

    explicit ParameterizedEdit(QWidget *parent = nullptr);

    void highlightValidation(bool enabled);
    bool isValidationHighlighted() const { return m_highlight; }
    void setEmptyTextAllowed(bool allowed);
    bool isEmptyTextAllowed() const { return m_emptyAllowed; }
    void setBorderColor(BorderColor color);
    BorderColor borderColor() const { return m_color; }
    // Whether the text passes the validator and the empty-text rule.
    bool isInputValid() const;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void judgeText();

    BorderColor m_color = Normal;
    bool m_highlight = false;
    bool m_emptyAllowed = true;
};
