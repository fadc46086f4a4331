#pragma once

#include <string>

/// What the machine's own kernel knows of a process. (Wine tells of the times of the asker only.)
class KernelView {
public:
    /// The process whose command line has both texts in it; throws std::runtime_error without one.
    static KernelView of(const std::string& one, const std::string& other);
    /// The Wine server of this program.
    static KernelView ofWineServer();

    /// How long it was at work, in seconds.
    double workS() const;
    /// What it has of the machine's memory that nobody shares, in KiB.
    double memoryKb() const;
    int threads() const;

private:
    double statusOf(const std::string& key) const;

    explicit KernelView(std::string folder) : folder_(std::move(folder)) {}

    std::string folder_;
};

/// How long this program was at work, in seconds.
double ownWorkS();
