#pragma once

#include <utility>

#include "Link.h"
#include "QorEnd.h"

/// QOR as the TCP worker sees it. Each second end of a connection is a reset, which loses what was
/// not read.
class LinkEnd final : public QorEnd {
public:
    enum class Pieces { whole, cut };

    /// Listens under this name, at once. Records that are cut arrive in two pieces each, at most,
    /// of every length there is.
    explicit LinkEnd(std::string name, Pieces pieces = Pieces::whole)
        : name_(std::move(name)), pieces_(pieces) {
        links::listen(name_);
    }
    ~LinkEnd() override { links::stopListening(name_); }
    LinkEnd(const LinkEnd&) = delete;
    LinkEnd& operator=(const LinkEnd&) = delete;

    bool accept() override {
        link_ = links::accept(name_);
        return link_ != nullptr;
    }
    bool isOpen() override {
        return link_ != nullptr && !link_->toQor.isClosed() && !link_->toLibrary.isClosed();
    }
    std::string receive() override { return link_->toQor.takeAll(); }
    void send(const std::string& record) override {
        const std::size_t first = pieces_ == Pieces::cut ? ++sent_ % record.size() : 0;
        if (first != 0) link_->toLibrary.append(record.substr(0, first));
        link_->toLibrary.append(first != 0 ? record.substr(first) : record);
    }
    void hangUp() override {
        if (++hangUps_ % 2 == 0)
            link_->toLibrary.breakOff();
        else
            link_->toLibrary.close();
    }

private:
    const std::string name_;
    const Pieces pieces_;
    std::shared_ptr<Link> link_;
    std::size_t sent_ = 0;
    int hangUps_ = 0;
};
