#pragma once

// The base of every form model: a window's controls, each declared once as a member with
// TORV_CONTROL / TORV_CONTROL_ARRAY / TORV_PICTURE, which registers it here in declaration
// order. The window binds them by walking this list; look-ups by name use it too.

#include <QString>
#include <functional>
#include <vector>

namespace torv {

struct Control;

class FormModel {
public:
    FormModel() = default;
    // Controls register by address: a form is neither copied nor moved.
    FormModel(const FormModel&) = delete;
    FormModel& operator=(const FormModel&) = delete;

    QString caption; // the window's caption

    void add(Control& c) { controls_.push_back(&c); }
    const std::vector<Control*>& controls() const { return controls_; }
    void forEach(const std::function<void(Control&)>& f) const {
        for (Control* c : controls_)
            f(*c);
    }
    // The control of that name, or null.
    Control* find(const QString& name) const;

    // The control that should get the focus next (its name), set by the logic, taken by the view.
    QString focusRequest;
    void setFocus(const Control& c);

private:
    std::vector<Control*> controls_;
};

} // namespace torv

// Declares a control member of a form model under its own name, with an optional caption.
#define TORV_CONTROL(member, ...)                                                                  \
    ::torv::Control member {                                                                       \
        this, #member __VA_OPT__(, ) __VA_ARGS__                                                   \
    }
#define TORV_CONTROL_ARRAY(member, lo, hi)                                                         \
    ::torv::ControlArray<lo, hi> member {                                                          \
        this, #member                                                                              \
    }
#define TORV_PICTURE(member)                                                                       \
    ::torv::Picture member {                                                                       \
        this, #member                                                                              \
    }
