#include "Backend/Postgres.h"

#include <gmock/gmock.h>

#include <sodium.h>

int main(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
    if (sodium_init() < 0) {
        return 1;
    }
    testing::AddGlobalTestEnvironment(new fernhollow::backend::tests::Postgres);
    return RUN_ALL_TESTS();
}
