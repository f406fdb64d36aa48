#pragma once

#include <QLabel>

namespace rataip::viewer {

/** A line below everything else that says what became of saving; hidden until there is a word. */
class OutcomeLine : public QLabel {
    Q_OBJECT

public:
    explicit OutcomeLine(QWidget* parent = nullptr);

    void say(const QString& sentence);
};

}  // namespace rataip::viewer
