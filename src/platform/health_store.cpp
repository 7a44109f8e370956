#include "platform/health_store.h"

#include "core/check.h"

namespace pedvar {

double HKQuantity::doubleValue(HKUnit unit) const {
    check(unit.dimension == dimension_, "a quantity was asked for in a unit of another dimension");
    return unit.fromKept(kept_);
}

}  // namespace pedvar
