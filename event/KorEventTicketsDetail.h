#pragma once

#include <functional>
#include <vector>

/// Makes room for one more element, so that adding it cannot fail.
template <typename TElement>
void MakeRoom(std::vector<TElement>& vecElements)
{
    if (vecElements.size() == vecElements.capacity())
        vecElements.reserve(2 * vecElements.size() + 8);
}

/// What a loop waits for under one number.
struct SKorTicket
{
    enum EKind : unsigned char
    {
        KIND_FREE,
        KIND_TIMER,
        KIND_HANDLE,
        KIND_SIGNAL
    };

    std::function<void()> m_fnHandler;
    int m_nTicket = 0;         ///< Its number; of a free one the number that it had last.
    int m_nKey = 0;            ///< Place of a timer, the handle, the signal.
    int m_nNext = 0;           ///< The next ticket of the handle or signal; of a free one the next.
    unsigned int m_nValue = 0; ///< A timer's period, a handle's events, whether a signal is due.
    unsigned int m_nRound = 0; ///< The round in which a handle's ticket was looked at last.
    EKind m_eKind = KIND_FREE;
};

/// All tickets of a loop by their numbers.
///
/// A ticket lies at its number modulo the size of the table, a power of two. A freed place gives
/// its next ticket the next number that leads there, so that no two live tickets meet and numbers
/// come again as late as possible. Adding may move every ticket; removing moves none.
class CKorTicketTable
{
public:
    int Add(SKorTicket::EKind eKind, int nKey, unsigned int nValue,
            std::function<void()>&& fnHandler);
    /// Frees a ticket that exists. @return its handler, for the caller to destroy: what it holds
    /// may use the loop while it is destroyed.
    std::function<void()> Remove(int nTicket);
    /// The ticket, or null when there is none of this number.
    SKorTicket* Find(int nTicket);
    /// A ticket that exists.
    SKorTicket& operator[](int nTicket) { return m_vecTickets[Place(nTicket)]; }
    /// The number of the first ticket from a place on, 0 when there is none.
    /// @param[in,out] rnPlace  the place; that of the ticket
    int FirstFrom(size_t& rnPlace) const;

private:
    size_t Place(int nTicket) const { return static_cast<size_t>(nTicket) & m_nMask; }
    void Free(size_t nPlace, int nLastTicket);
    void Grow();

    std::vector<SKorTicket> m_vecTickets;
    size_t m_nMask = 0; ///< The size less 1.
    int m_nFirstFree = -1;
    int m_nLastFree = -1;
};
