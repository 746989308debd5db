#pragma once

#include <functional>
#include <string>

/// Runs @p fnMain in a forked copy of this process; a failure in it fails the running test.
void InChild(const std::function<void()>& fnMain);

/// Takes every privilege from this process that its user id gives: root meets the same refusals as
/// anyone else. There is no way back.
void DropPrivileges();

/// Mounts a file system of 64 KiB in memory at a directory, for this process and its children
/// alone. @return false where the machine does not permit it
bool MountSmallDisk(const std::string& strDirectory);
