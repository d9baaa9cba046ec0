#pragma once

#include <tessaro/Export.h>
#include <tessaro/frame/DataTailT.h>

namespace tessaro {

/// History and block of several float rows, as nearly all processors use it; see `DataTailT` for what each
/// operation does.
class TESSARO_EXPORT DataTail : public DataTailT<float>
{
public:
    using DataTailT::DataTailT;

    DataTail() = default;
    DataTail(const DataTail&) = default;
    DataTail& operator=(const DataTail&) = default;
    ~DataTail() override;
};

} // namespace tessaro
