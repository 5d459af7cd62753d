#include "App/Shell/Launch.h"

int main(int argc, char** argv) {
    return fernhollow::launch(argc, argv);
}
