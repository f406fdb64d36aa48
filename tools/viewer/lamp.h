#pragma once

#include <QWidget>

namespace rataip::viewer {

/**
 * A lamp for data that arrives. Lit it is a filled disc with a ring of light, dark an empty ring
 * with a cross, so that it is read without its colour.
 */
class Lamp : public QWidget {
    Q_OBJECT

public:
    explicit Lamp(QWidget* parent = nullptr);

    void setLit(bool isLit);
    [[nodiscard]] bool isLit() const { return m_isLit; }

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    bool m_isLit = false;
};

}  // namespace rataip::viewer
