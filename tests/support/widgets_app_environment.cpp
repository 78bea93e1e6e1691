// Window tests need a QApplication for the whole test program; this registers one.

#include <QApplication>
#include <gtest/gtest.h>

namespace {

class WidgetsEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        static int argc = 1;
        static char name[] = "torv-window-test";
        static char* argv[] = {name, nullptr};
        app_ = new QApplication(argc, argv);
    }
    void TearDown() override {
        delete app_;
        app_ = nullptr;
    }

private:
    QApplication* app_ = nullptr;
};

[[maybe_unused]] const auto* const registered =
    ::testing::AddGlobalTestEnvironment(new WidgetsEnvironment);

} // namespace
