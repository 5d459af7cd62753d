#include "Support/BusMain.h"

#include <QCoreApplication>

int main(int argc, char** argv) {
    return fernhollow::tests::runOnABusOfItsOwn<QCoreApplication>(argc, argv);
}
