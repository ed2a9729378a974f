#pragma once

#include <QTest>

/// One row of a test's table on one line: row("in words", value, value).
template<class... Values>
void row(const char *name, const Values &...values)
{
    QTestData &data = QTest::newRow(name);
    (data << ... << values);
}
