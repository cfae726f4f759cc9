#include "writer/class_instances.h"

#include "host/add_to_vector_callback.h"

using NKELVOR20::ICIMClass;
using NKELVOR20::ICIMInstance;
using NKELVOR20::TAddToVectorCallback;
using NKELVOR20::TInstanceCallback;

std::vector<boost::shared_ptr<ICIMInstance>> ListInstances(ICIMClass& cimClass) {
    std::vector<boost::shared_ptr<ICIMInstance>> instances;
    cimClass.EnumerateInstances(TInstanceCallback(TAddToVectorCallback<ICIMInstance>(&instances)),
                                /*flag=*/true, {});
    return instances;
}
