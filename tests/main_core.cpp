// Entry of the display-free tests: a core application object, so that work posted to the main
// thread has an event loop to arrive in.
#include <QCoreApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
