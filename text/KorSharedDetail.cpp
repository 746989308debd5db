#include "text/KorSharedDetail.h"

namespace
{

struct SDelete
{
    void operator()(void* pObject) const { m_pfnDelete(pObject); }

    void (*m_pfnDelete)(void*);
};

} // namespace

std::shared_ptr<void> KorShare(void* pObject, void (*pfnDelete)(void*))
{
    return std::shared_ptr<void>(pObject, SDelete{pfnDelete});
}
