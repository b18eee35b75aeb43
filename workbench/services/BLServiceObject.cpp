#include "services/BLServiceObject.h"

#include <utility>

namespace Workbench {

BLHighlightObject::BLHighlightObject(Documents::AnnotationRef annotation, double pageScale)
    : annotation_(std::move(annotation)), pageScale_(pageScale)
{
    Offer<BLHighlight::GetAnnotation, &BLHighlightObject::GetAnnotation>();
}

ResultCode BLHighlightObject::GetAnnotation(_PDAnnotRec** annotation, double* pageScale) const
{
    if (annotation == nullptr || pageScale == nullptr) {
        return kResultNullArgument;
    }
    *annotation = Documents::AnnotationRef(annotation_).Detach();
    *pageScale = pageScale_;
    return kResultOk;
}

BLAnnotNavigatorObject::BLAnnotNavigatorObject()
{
    Offer<BLAnnotNavigator::BuildHighlight, &BLAnnotNavigatorObject::BuildHighlight>();
}

ResultCode BLAnnotNavigatorObject::BuildHighlight(const BLHighlightArguments* arguments,
                                                  ServiceObject** highlight) const
{
    if (highlight == nullptr) {
        return kResultNullArgument;
    }
    *highlight = nullptr;
    if (arguments == nullptr || arguments->document == nullptr || arguments->target == nullptr ||
        arguments->annotation == nullptr) {
        return kResultNullArgument;
    }
    *highlight = BLHighlightObject::Make(Documents::AnnotationRef::Retain(arguments->annotation),
                                         arguments->pageScale)
                     .Detach()
                     ->AsInterface();
    return kResultOk;
}

BLServiceObject::BLServiceObject() : navigator_(BLAnnotNavigatorObject::Make())
{
    Offer<BLService::GetAnnotNavigator, &BLServiceObject::GetAnnotNavigator>();
}

ResultCode BLServiceObject::GetAnnotNavigator(BLAnnotNavigator** navigator) const
{
    if (navigator == nullptr) {
        return kResultNullArgument;
    }
    HandOut(navigator_, navigator);
    return kResultOk;
}

}  // namespace Workbench
