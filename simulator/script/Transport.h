#pragma once

namespace simulator {

/// How records travel.
enum class Transport { Tcp, WindowMessages };

/// When the answer to a request that came as a window message is sent: from inside its handler
/// while the sender still waits, from inside it after the sender has been released, or by the main
/// loop after the handler has returned.
enum class WindowAnswer { Inside, Released, Later };

}  // namespace simulator
