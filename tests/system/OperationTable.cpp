#include "OperationTable.h"

#include <iterator>

std::string scriptOf(const std::vector<Rule>& rules) {
    std::string text;
    for (const Rule& rule : rules)
        text += (text.empty() ? "" : ",") + std::string("{\"match\":") + rule.match +
                ",\"action\":" + rule.action + "}";
    return "{\"rules\":[" + text + "]}";
}

const std::vector<OperationRow>& operationTable() {
    static const std::vector<OperationRow> table = [] {
        std::vector<OperationRow> rows = paramTable();
        for (auto& more : {diagnosticTable(), sessionTable()})
            rows.insert(rows.end(), more.begin(), more.end());
        return rows;
    }();
    return table;
}
