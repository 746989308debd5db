#pragma once

// The thread that hands on what a line receives. Not installed.

#include "serial/KorLineStateDetail.h"

#include <pthread.h>

/// One reception, from its start to the end of its thread.
class CKorLineReception
{
public:
    CKorLineReception(CKorSerialLine::DataHandler fnData, CKorSerialLine::HangupHandler fnHangup);

    CKorLineWake m_oWake;
    bool m_bEnded = false;  ///< No handler is called any more. Guarded by the line's mutex.
    bool m_bJoined = false; ///< Somebody waits for the thread. Guarded by the line's mutex.
    pthread_t m_nThread{};  ///< Guarded by the line's mutex.

    /// What the thread does.
    void Run(CKorLineState& oState);

private:
    int Receive(CKorLineState& oState, std::size_t& rnCount);

    CKorSerialLine::DataHandler m_fnData;
    CKorSerialLine::HangupHandler m_fnHangup;
    char m_acBlock[CKorLineState::BLOCK];
};

/// Starts a thread for a line. With the line's mutex. @return 0 or an error number
int KorStartLineReception(const std::shared_ptr<CKorLineState>& pState,
                          std::shared_ptr<CKorLineReception> pReception);

/// Tells the reception that runs, if one does, to end. With the line's mutex.
void KorEndLineReception(CKorLineState& oState);

/// Waits for the threads of all receptions that ended; in one of them it returns at once.
void KorJoinLineReceptions(CKorLineState& oState);
