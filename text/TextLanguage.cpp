#include "text/TextLanguage.h"

#include "text/TextHolder.h"

bool TextLanguage::Serialise(Archive& archive)
{
    archive.Value(name);
    archive.Value(description);
    archive.Boundary();
    archive.Value(firstAttribute);
    archive.Value(secondAttribute);
    archive.Boundary();
    archive.List(subObjects, &TextHolder::CreateObject);
    return archive.Ok();
}
