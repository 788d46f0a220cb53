#include "debug/evaluation/VariableListBuilder.h"

VariableListBuilder::arrayEvalMode VariableListBuilder::getArrayEvalMode(const QString&, const QString&,
                                                                         unsigned&)
{
    return ArrayElements;
}

VariableListBuilder::structEvalMode VariableListBuilder::getStructEvalMode(const QString&, const QString&)
{
    return StructFields;
}
