#include "text/KorSharedDetail.h"

#include <gtest/gtest.h>
#include <string>

namespace
{

/// Counts those of its kind that exist.
class Counted
{
public:
    explicit Counted(int& rnCount) : m_rnCount(rnCount) { ++m_rnCount; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
    ~Counted() { --m_rnCount; }

private:
    int& m_rnCount;
};

TEST(KorShared, DeletesItsObjectWithTheLastOwner)
{
    int nCount = 0;
    std::shared_ptr<Counted> pFirst = KorMakeShared<Counted>(nCount);
    std::shared_ptr<Counted> pSecond = pFirst;
    EXPECT_EQ(2, pFirst.use_count());
    pFirst.reset();
    EXPECT_EQ(1, nCount);
    pSecond.reset();
    EXPECT_EQ(0, nCount);
}

TEST(KorShared, HandsItsArgumentsOn)
{
    EXPECT_EQ("xxx", *KorMakeShared<std::string>(3U, 'x'));
}

} // namespace
