// Tests on real sockets need a Qt application object for the event loop; this registers one
// for the whole test program.

#include <QCoreApplication>
#include <gtest/gtest.h>

namespace {

class QtAppEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        if (QCoreApplication::instance()) return;
        static int argc = 1;
        static char name[] = "torv-test";
        static char* argv[] = {name, nullptr};
        app_ = new QCoreApplication(argc, argv);
    }
    void TearDown() override {
        delete app_;
        app_ = nullptr;
    }

private:
    QCoreApplication* app_ = nullptr;
};

[[maybe_unused]] const auto* const registered =
    ::testing::AddGlobalTestEnvironment(new QtAppEnvironment);

} // namespace
