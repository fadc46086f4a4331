"""The model of a station's QOR: every value tells which parameter it is of, and a stamp also when QOR made it.
host/Stamps.h, host/Reads.cpp and host/Writes.cpp know the same names and numbers."""

OWN_UNIT = 1 << 20
CODES = 5
KWP_SERVICE = 0x21


def numbered(stem, count):
    return [f"{stem}{i:02}" for i in range(count)]


def described(name, **shape):
    return {"name": name, "description": "This is " + name, "unit": "1", "group": "Soak",
            "limits": [0, 1e15], **shape}


def stamped(stem, count, first, values, xs=0, ys=0):
    for i, name in enumerate(numbered(stem, count)):
        shape = {"value": 0} if values == 1 else {"values": [0] * values}
        for key, points in (("x", xs), ("y", ys)):
            if points:
                shape[key] = [first + i + point for point in range(points)]
        yield described(name, stamp=first + i, **shape)


def own(threads):
    for i in range(threads):
        yield described(f"Own{i:02}", value=i * OWN_UNIT)
        text = {"name": f"Text{i:02}", "description": f"This is Text{i:02}", "text": f"Text{i:02}:0", "maxLength": 40}
        yield text
        yield described(f"Actuator{i:02}", value=i * 100, actuator=True)


def model(threads):
    """For so many threads, and the one that gives the orders."""
    parameters = [*stamped("Meter", 16, 1, 1), *stamped("Row", 8, 101, 3), *stamped("Curve", 4, 201, 3, 3),
                  *stamped("Map", 2, 301, 4, 2, 2), *stamped("Flow", 4, 401, 1), *own(threads + 1)]
    kwp = [{"service": KWP_SERVICE, "data": f"{i:02X}", "response": f"{KWP_SERVICE + 0x40:02X}{i:02X}{255 - i:02X}"}
           for i in range(16)]
    return {"parameters": parameters,
            "troubleCodes": [{"code": 0x2100 + i, "status": i, "texts": [f"Code{i:02}"]} for i in range(CODES)],
            "kwpServices": kwp,
            "canFrames": [{"id": 0x100 + i, "value": 7000 + 0x100 + i} for i in range(16)]}
