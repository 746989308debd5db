#pragma once

#include "event/KorEventTicketsDetail.h"

#include <cstdint>
#include <sys/epoll.h>
#include <sys/stat.h>

/// The handles that one loop watches, by means of one epoll object.
///
/// All tickets of a handle share one registration. It is good for one event and is renewed before
/// every call of a handler; this fails when the handle was closed meanwhile, whatever has its
/// number now. An old registration, which the kernel keeps while another handle refers to the same
/// open file, is thus reported once at most, and its own number tells it from a new one.
class CKorEventHandles
{
public:
    explicit CKorEventHandles(CKorTicketTable& oTickets) : m_oTickets(oTickets) {}
    ~CKorEventHandles();
    CKorEventHandles(const CKorEventHandles&) = delete;
    CKorEventHandles& operator=(const CKorEventHandles&) = delete;

    /// Opens the epoll object, for a wake-up handle and for what is watched so far.
    bool Open(int hWake);

    /// Whether a handle has tickets; it may have been closed.
    bool IsWatched(int nHandle) const;
    /// @return the ticket, or -1 with `errno`
    int Add(int nHandle, unsigned int nEvents, std::function<void()>&& fnHandler);
    /// Takes a ticket out of its handle's list. @return false when the handle was closed
    bool Remove(int nTicket);
    /// Renews the registration of a handle. @return false when the handle was closed
    bool Arm(int nHandle);
    /// The number of a handle's registration.
    unsigned int RegistrationOf(int nHandle) const;
    /// Takes the first ticket out of the list of a handle that was closed.
    /// @return the ticket, 0 when no ticket of the registration is left
    int TakeFirst(int nHandle, unsigned int nRegistration);

    /// Waits for handles or for the wake-up.
    /// @param pEvents   receives the events
    /// @param nSize     how many, at most
    /// @param nTimeout  in nanoseconds, KOR_NEVER for ever
    /// @return the number of events, -1 on failure
    int Wait(epoll_event* pEvents, int nSize, std::int64_t nTimeout) const;
    /// The handle of an event, -1 when it is an old one or the wake-up.
    int HandleOf(const epoll_event& oEvent) const;
    /// Handles that are always ready, which epoll does not take.
    const std::vector<int>& GetAlwaysReady() const { return m_vecAlwaysReady; }
    /// Whether one of them is to be called.
    bool IsReady() const;

    /// The next ticket of a handle that was not looked at in this round, 0 when there is none.
    int NextOf(int nHandle, unsigned int nRound);
    /// What the kernel says of a handle now.
    unsigned int Poll(int nHandle) const;
    /// What a ticket is to be told of what the kernel says.
    unsigned int EventsFor(int nTicket, unsigned int nReady) const;

private:
    struct SHandle
    {
        int m_nFirst = 0; ///< its first ticket
        unsigned int m_nRegistration = 0;
        bool m_bAlwaysReady = false;
        dev_t m_nDevice = 0; ///< which file it is, when it is always ready
        ino_t m_nFile = 0;
    };

    const SHandle& At(int nHandle) const { return m_vecHandles[static_cast<size_t>(nHandle)]; }
    SHandle& At(int nHandle) { return m_vecHandles[static_cast<size_t>(nHandle)]; }
    bool Link(int nHandle, int nTicket);
    void Unlink(int nTicket);
    bool Register(int nHandle);
    bool RegisterAlwaysReady(int nHandle);
    bool IsSameFile(int nHandle) const;
    bool Control(int nOperation, int nHandle) const;
    unsigned int EventsOf(int nHandle) const;

    CKorTicketTable& m_oTickets;
    int m_hPoll = -1;
    unsigned int m_nRegistration = 0;
    std::vector<SHandle> m_vecHandles; ///< by their numbers
    std::vector<int> m_vecAlwaysReady;
};
