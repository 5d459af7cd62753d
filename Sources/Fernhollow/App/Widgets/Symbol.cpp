#include "App/Widgets/Symbol.h"

#include <QFile>
#include <QPainter>

namespace fernhollow {

QByteArray colouredSymbol(const QString& name, const QColor& color) {
    QFile file(QStringLiteral(":/symbols/%1.svg").arg(name));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    return file.readAll().replace("currentColor", color.name().toLatin1());
}

Symbol::Symbol(const QString& name, const QColor& color, QSize size, QWidget* parent)
    : QWidget(parent), color_(color), size_(size) {
    setName(name);
    setFixedSize(size);
}

void Symbol::setName(const QString& name) {
    if (name == objectName()) {
        return;
    }
    setObjectName(name);
    renderer_.load(colouredSymbol(name, color_));
    renderer_.setAspectRatioMode(Qt::KeepAspectRatio);
    update();
}

void Symbol::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    renderer_.render(&painter, QRectF(rect()));
}

} // namespace fernhollow
