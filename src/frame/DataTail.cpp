#include <tessaro/frame/DataTail.h>

#include <tessaro/frame/DataTail1D.h>

namespace tessaro {

DataTail::~DataTail() = default;

DataTail1D::~DataTail1D() = default;

void DataTail1D::ChangeBufferSize(int inMaxBlockSize)
{
    mTail.ChangeBufferSize(inMaxBlockSize);
}

} // namespace tessaro
