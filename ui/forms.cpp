#include "ui/forms.h"

#include <memory>

namespace {

FormBinders formBinders;
std::unique_ptr<FrmStartUp> startUpForm;
std::unique_ptr<FrmMain> mainForm;
std::unique_ptr<FrmWait> waitForm;

template <class Form>
Form& loaded(std::unique_ptr<Form>& form, const std::function<void(Form&)>& bind) {
    if (!form) {
        form = std::make_unique<Form>();
        bind(*form);
        platform::host().load(*form);
        form->load();
    }
    return *form;
}

} // namespace

FrmStartUp& frmStartUp() {
    return loaded(startUpForm, formBinders.frmStartUp);
}

FrmMain& frmMain() {
    return loaded(mainForm, formBinders.frmMain);
}

FrmWait& frmWait() {
    return loaded(waitForm, formBinders.frmWait);
}

bool frmWaitLoaded() {
    return waitForm != nullptr;
}

void unloadFrmWait() {
    if (waitForm) {
        platform::host().unload(*waitForm);
        waitForm.reset();
    }
}

void setFormBinders(FormBinders binders) {
    formBinders = std::move(binders);
}

void resetForms() {
    waitForm.reset();
    mainForm.reset();
    startUpForm.reset();
}
