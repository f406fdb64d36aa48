#pragma once

#include <QLabel>

namespace rataip::viewer {

/** A line at the bottom of a window with the result of saving. Hidden until there is one. */
class OutcomeLine : public QLabel {
    Q_OBJECT

public:
    explicit OutcomeLine(QWidget* parent = nullptr);

    void say(const QString& sentence);
};

}  // namespace rataip::viewer
