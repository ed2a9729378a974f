#pragma once

#include <QTest>

/// The columns of a test's table on one line: columns<QString, int>("text", "size").
template<class... Values, class... Names>
void columns(Names... names)
{
    static_assert(sizeof...(Values) == sizeof...(Names));
    (QTest::addColumn<Values>(names), ...);
}

/// One row of it: row("in words", value, value).
template<class... Values>
void row(const char *name, const Values &...values)
{
    QTestData &data = QTest::newRow(name);
    (data << ... << values);
}
