#include "text/TextCatagory.h"

bool TextCatagory::Serialise(Archive& archive)
{
    archive.Value(number);
    archive.Value(name);
    archive.Boundary();
    uint32_t count = uint32_t(members.size());
    if (archive.IsReading())
    {
        members.clear();
        if (!archive.Count(count, 4))
            return false;
        members.resize(count);
    }
    else
        archive.Value(count);
    for (uint32_t& member : members)
        archive.Value(member);
    return archive.Ok();
}
