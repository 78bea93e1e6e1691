#include "platform.h"

#include <cstdlib>

namespace torv {

Platform::ModalBox::~ModalBox() {
    if (--p_.modalDepth_ == 0 && !p_.held_.empty()) p_.scheduleHeldEvents();
}

void Platform::deliverOrHold(std::function<void()> event) {
    // Held events keep their order: a new one waits behind them.
    if (modalDepth_ > 0 || !held_.empty()) {
        held_.push_back(std::move(event));
        if (modalDepth_ == 0 && !delivering_) scheduleHeldEvents();
        return;
    }
    event();
}

void Platform::deliverHeldEvents() {
    if (delivering_) return;
    struct Delivering {
        bool& flag;
        ~Delivering() { flag = false; }
    } delivering{delivering_ = true};
    while (modalDepth_ == 0 && !held_.empty()) {
        std::function<void()> event = std::move(held_.front());
        held_.pop_front();
        event();
    }
}

void Platform::endProgramWithError() {
    endProgram();
    std::abort(); // not reached: endProgram does not return
}

} // namespace torv
