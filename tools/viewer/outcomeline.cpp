#include "tools/viewer/outcomeline.h"

namespace rataip::viewer {

OutcomeLine::OutcomeLine(QWidget* parent) : QLabel(parent) {
    setWordWrap(true);
    setMargin(fontMetrics().height() / 3);
    setAccessibleName(QStringLiteral("Result of saving"));
    hide();
}

void OutcomeLine::say(const QString& sentence) {
    setText(sentence);
    show();
}

}  // namespace rataip::viewer
