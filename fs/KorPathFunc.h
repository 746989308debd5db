#pragma once

/// @file
/// Cutting and joining of path texts.
///
/// The slash and the backslash are separators alike. Nothing here touches the file system. All
/// functions keep no state and may run on any number of threads.
///
/// What surprises, why, and what to do instead: docs/known-behaviour.md#files-and-paths

#include "KorExport.h"

#include <string>

/// @addtogroup files
/// @{

/// Cuts a path into drive, directory, title and extension, which put together again give the
/// path, character for character.
///
/// | Path             | Drive        | Directory   | Title      | Extension |
/// |------------------|--------------|-------------|------------|-----------|
/// | `/usr/bin/x.bin` |              | `/usr/bin/` | `x`        | `.bin`    |
/// | `\\srv\share\f.x`| `\\srv\`     | `share\`    | `f`        | `.x`      |
/// | `/name.ext`      |              |             | `/name`    | `.ext`    |
/// | `dir/`           |              | `dir/`      |            |           |
/// | `a.b.c`          |              |             | `a.b`      | `.c`      |
/// | `.profile`       |              |             | `.profile` |           |
///
/// The directory keeps its trailing separator. The drive is the server of a network path that
/// begins with two backslashes; drive letters have no meaning. A separator that is the path's
/// first character and its only one belongs to the title.
///
/// @param pszPath   the path
/// @param pstrDrive receives the drive; may be null, like the three that follow
/// @param pstrDir   receives the directory
/// @param pstrTitle receives the file name without its extension
/// @param pstrExt   receives the extension with its leading "."
/// @throws std::out_of_range "basic_string::substr" for a title without any ".". Drive and
///         directory are set then, the title holds the whole file name, the extension is empty.
/// @throws std::logic_error "basic_string::_S_construct NULL not valid" for a null @p pszPath
TARVO_EXT_API void SplitPath(const char* pszPath, std::string* pstrDrive, std::string* pstrDir,
                             std::string* pstrTitle, std::string* pstrExt);

/// The title and the extension of a path: its last component.
/// @throws as SplitPath()
TARVO_EXT_API std::string GetFileName(const char* pszPath);

/// The drive and the directory of a path, with the trailing separator.
/// @throws as SplitPath()
TARVO_EXT_API std::string GetPathName(const char* pszPath);

/// True for the slash and the backslash.
TARVO_EXT_API bool IsSeparator(char c);

/// Joins a path to a base directory. Steps "./" and "../" at the head of the path are taken
/// against the base; every separator of the result is a slash.
///
/// | Path        | Base       | Result            |
/// |-------------|------------|-------------------|
/// | `x.ini`     | `/opt/app` | `/opt/app/x.ini`  |
/// | `..\x.ini`  | `/opt/app/`| `/opt/x.ini`      |
/// | `/etc/x.ini`| `/opt/app` | `/opt/app/etc/x.ini` |
/// | `../../x`   | `/opt`     | `/x`              |
/// | `.cfg`      | `/a`       | `/a/.cfg`         |
/// | `..`        | `/a`       | `/a/..`           |
///
/// A leading separator of the path has no meaning: the path is always joined to the base. Steps
/// inside the path, a step without a separator behind it and doubled separators stay. A "../"
/// that finds no separator left in the base has no effect.
///
/// @param pszPath  the path
/// @param pszBase  the base directory, with or without a trailing separator; null and "" are the
///                 root directory
/// @throws std::logic_error "basic_string::_S_construct NULL not valid" for a null @p pszPath
TARVO_EXT_API std::string MakePathAbsolute(const char* pszPath, const char* pszBase);

/// @}
