#pragma once

/// The kernel calls of the library fail when they must; its clock and its waits run faster than
/// real time, so that a test need not sit through pauses and time-outs.
namespace torture {

/// So many of the library's milliseconds pass in one.
constexpr unsigned int haste = 10;

/// Threads that the library has started and that have not ended.
int threadsOfLibrary() noexcept;

int openThreadHandles() noexcept;
/// On the module that holds the library's code, by its threads.
int moduleReferences() noexcept;

}  // namespace torture
