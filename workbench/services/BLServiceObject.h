// The host's "BLService", its annotation navigator, and the highlights that the navigator creates.
#pragma once

#include "documents/RecordRef.h"
#include "services/HostObject.h"
#include "ui-engine/BLService.SO.h"

namespace Workbench {

// Mark that a view shows around an annotation. Private to the host.
struct BLHighlight : ServiceObject {
    static constexpr const char* kName = "BLHighlight";
    static constexpr const char* kHeader = "services/BLServiceObject.h";

    // The marked annotation, with a reference for the caller, and the scale of its page.
    SO_METHOD(BLHighlight, GetAnnotation, 0, _PDAnnotRec** annotation, double* pageScale);

    using Catalogue = SODetails::MethodCatalogue<GetAnnotation>;
};

class BLHighlightObject : public HostObject<BLHighlightObject, BLHighlight> {
public:
    BLHighlightObject(Documents::AnnotationRef annotation, double pageScale);

private:
    ResultCode GetAnnotation(_PDAnnotRec** annotation, double* pageScale) const;

    Documents::AnnotationRef annotation_;
    double pageScale_;
};

class BLAnnotNavigatorObject : public HostObject<BLAnnotNavigatorObject, BLAnnotNavigator> {
public:
    BLAnnotNavigatorObject();

private:
    ResultCode BuildHighlight(const BLHighlightArguments* arguments,
                              ServiceObject** highlight) const;
};

class BLServiceObject : public HostObject<BLServiceObject, BLService> {
public:
    BLServiceObject();

private:
    ResultCode GetAnnotNavigator(BLAnnotNavigator** navigator) const;

    BasicServiceObjectPtr<BLAnnotNavigatorObject> navigator_;
};

}  // namespace Workbench
