// The least that a program with a status item can be. With --window it also shows an empty window for a
// second and then hides it.

#include <QApplication>
#include <QLabel>
#include <QSystemTrayIcon>
#include <QTimer>

#include <chrono>

int main(int argc, char** argv) {
    using namespace std::chrono_literals;
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QPixmap picture(22, 22);
    picture.fill(Qt::white);
    QSystemTrayIcon icon{QIcon(picture)};
    icon.show();

    QLabel window(QStringLiteral("Empty"));
    if (QApplication::arguments().contains(QStringLiteral("--window"))) {
        window.resize(420, 750);
        window.show();
        QTimer::singleShot(1s, &window, &QWidget::hide);
    }
    return QApplication::exec();
}
