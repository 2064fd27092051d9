#pragma once

#include <hwy/targets.h>

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

/** A kernel and the name of its instruction set. */
template <typename Kernel>
struct NamedKernel {
    std::string strName;
    const Kernel *pKernel;
};

template <typename Kernel>
void PrintTo(const NamedKernel<Kernel> &kernel, std::ostream *out)
{
    *out << kernel.strName;
}

/** The portable kernel, then those of all instruction sets that this processor has, the best first. */
template <typename Kernel>
std::vector<NamedKernel<Kernel>> AllKernels(const Kernel &portable, const Kernel &(*best)())
{
    std::vector<NamedKernel<Kernel>> kernels = {{"Portable", &portable}};
    for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
        if (target == HWY_SCALAR || target == HWY_EMU128)
            continue;
        hwy::SetSupportedTargetsForTest(target);
        kernels.push_back({hwy::TargetName(target), &best()});
    }
    hwy::SetSupportedTargetsForTest(0);
    return kernels;
}
