#pragma once

#include <QWidget>

namespace rataip::viewer {

/**
 * Shows whether data arrives. A filled disc when lit, an empty ring with a cross when dark, so that
 * it can be read without its colour.
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
