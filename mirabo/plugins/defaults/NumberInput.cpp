#include "NumberInput.h"

#include "Expression.h"
#include "NumberText.h"

bool readNumber(FieldNumbers::Kind kind, const QString& text, double present, double& number,
                QString& problem)
{
    const Expression expression = Expression::evaluate(text, present);
    if (!expression.isValid) {
        problem = QString("At %1: %2").arg(expression.column).arg(expression.problem);
        return false;
    }
    number = expression.number;
    return fitNumber(kind, number, &problem);
}
