#pragma once

// The kernel's settings of a terminal, with free speeds where the kernel has them. Not installed.
// In a source of its own because the kernel's headers and <termios.h> exclude each other.

/// The settings as the kernel keeps them; the flags have the values of <termios.h>.
struct SKorLineSettings
{
    static constexpr unsigned int CHARACTERS = 19;

    unsigned int m_nInput = 0;
    unsigned int m_nOutput = 0;
    unsigned int m_nControl = 0;
    unsigned int m_nLocal = 0;
    unsigned char m_nDiscipline = 0;
    unsigned char m_anCharacters[CHARACTERS] = {};
    unsigned int m_nInputSpeed = 0;  ///< In bit/s.
    unsigned int m_nOutputSpeed = 0; ///< In bit/s.
};

/// Reads the settings. @return whether it worked; `errno` tells why not
bool KorGetLineSettings(int hLine, SKorLineSettings& rSettings);

/// Gives the line these settings at once. @return whether it worked; `errno` tells why not. A
/// kernel that knows speeds by name only refuses others with `EINVAL`.
bool KorSetLineSettings(int hLine, const SKorLineSettings& oSettings);

/// Puts the speed of both directions into the settings, by its name if it has one.
void KorSetLineSpeed(SKorLineSettings& rSettings, unsigned int nSpeed);
