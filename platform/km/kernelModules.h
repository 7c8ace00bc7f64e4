#ifndef PLATFORM_KM_KERNELMODULES_H
#define PLATFORM_KM_KERNELMODULES_H

#include <libkmod.h>

#include <memory>
#include <string>

namespace zamo {

// Whether this kernel can load modules at all.
[[nodiscard]] bool hasLoadableModules();

// The running kernel's modules, with the settings in modprobe.d. Both operations log a failure with
// the name of the service.
class KernelModules {
  public:
    explicit KernelModules(std::string service);

    [[nodiscard]] bool load(const std::string& name) const;
    [[nodiscard]] bool unload(const std::string& name) const;

  private:
    [[nodiscard]] bool logProblem(const std::string& name, const std::string& problem) const;
    [[nodiscard]] bool insert(kmod_module* module) const;
    [[nodiscard]] bool acceptUnknown(const std::string& name) const;

    struct ContextReleaser {
        void operator()(kmod_ctx* context) const { (void)kmod_unref(context); }
    };

    std::string service_;
    std::unique_ptr<kmod_ctx, ContextReleaser> context_;
};

}  // namespace zamo

#endif
