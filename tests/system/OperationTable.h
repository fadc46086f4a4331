#pragma once

#include <functional>
#include <string>
#include <vector>

#include "QorControlFacade.h"

/// What one operation of the facade does, told from outside: what goes over the wire, what it
/// writes, what it gives back, when QOR does as asked, refuses, or stays silent. All times in
/// lines read "t: # ms"; {timeout} stands for the caller's time-out.
struct OperationRow {
    using Lines = std::vector<std::string>;

    const char* name;
    /// Which of the requests is refused or left without an answer: the "match" of a rule.
    const char* decisiveRequest;
    /// Calls the operation; what it gave back beside true or false goes to the text.
    std::function<bool(QorControlFacade&, unsigned timeoutMs, std::string&)> call;
    std::string results;  ///< that text, after a success; empty after a failure
    Lines requests;
    Lines answers;        ///< after a success
    Lines answersBefore;  ///< to what comes before the decisive request
    Lines trace;
    Lines log;
    Lines failureTrace;
    Lines failureLog;
    /// Brings about what the operation needs; its records and lines do not count.
    std::function<void(QorControlFacade&)> prepare;
    bool heedsTimeout = true;  ///< false: has no time-out of the caller's
    /// It is true as soon as it is posted, whatever QOR says, and QOR may answer later.
    bool returnsAtOnce = false;
    /// It waits for nothing but the acknowledgement, and for that only as long as the caller says.
    bool acknowledgementIsAll = false;
};

/// A rule of QOR's behaviour: which requests, and what then.
struct Rule {
    std::string match;
    std::string action;
};
std::string scriptOf(const std::vector<Rule>& rules);

/// The operations by their subject.
std::vector<OperationRow> paramTable();
std::vector<OperationRow> diagnosticTable();
std::vector<OperationRow> sessionTable();
/// All operations but `connect` and `pingQor`, which the tests of the others need themselves.
const std::vector<OperationRow>& operationTable();
