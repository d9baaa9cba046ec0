#define TESSARO_PLAIN_NAMESPACE plain_native
#include "UtilityNative.h"

namespace native {

#define TESSARO_DEFINE(NAME)                                                                                 \
    void NAME(Rows& r)                                                                                       \
    {                                                                                                        \
        plain_native::NAME(r);                                                                               \
    }
TESSARO_ELEMENTWISE_KERNELS(TESSARO_DEFINE)
TESSARO_REDUCTION_KERNELS(TESSARO_DEFINE)
#undef TESSARO_DEFINE

} // namespace native
