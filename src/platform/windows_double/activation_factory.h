// IActivationFactory as every factory and statics object of the double answers it.
#pragma once

#include <activation.h>

#include "platform/windows_double/object.h"

namespace vexcap::windows_double {

template <class Self>
struct UnmodelledActivationFactory : IActivationFactory {
  using interface_type = IActivationFactory;
  HRESULT STDMETHODCALLTYPE ActivateInstance(IInspectable**) override {
    return static_cast<Self*>(this)->unmodelled("ActivateInstance");
  }
};

}  // namespace vexcap::windows_double
