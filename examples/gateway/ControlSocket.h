#pragma once

#include <string>
#include <sys/types.h>

/// A listening socket with a name in the file system, which the process's group may use.
class ControlSocket
{
public:
    ControlSocket() = default;
    ~ControlSocket();
    ControlSocket(const ControlSocket&) = delete;
    ControlSocket& operator=(const ControlSocket&) = delete;

    /// Begins to listen. The name of a socket on which nobody listens any more is taken over; the
    /// name appears with mode 0660 when there is somebody behind it.
    /// @return false with errno: `EADDRINUSE` when another process listens there, `EEXIST` when the
    ///         name is that of another kind of file
    bool Open(const std::string& strPath);
    /// Stops, and removes the name unless it is somebody else's by now.
    void Close();
    bool IsOpen() const { return m_hSocket != -1; }
    int Handle() const { return m_hSocket; }
    const std::string& Path() const { return m_strPath; }

    /// Takes a connection, which does not wait and is not inherited. @return -1 with errno
    int Accept() const;

private:
    bool Listen(const std::string& strName);

    int m_hSocket = -1;
    std::string m_strPath;
    dev_t m_nDevice = 0;
    ino_t m_nFile = 0;
};
