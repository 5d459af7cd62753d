#include "Support/BusMain.h"

#include <QApplication>

int main(int argc, char** argv) {
    return fernhollow::tests::runOnABusOfItsOwn<QApplication>(argc, argv);
}
