"""What a station's QOR does wrong, as a script for the simulator: drawn at random, so that the same draws give the
same script. Each rule leaves its name in QOR's log whenever it decides."""

READS = {"description": (3, None), "read": (7, 1), "arrays": (12, 1), "together": (18, None), "codes": (9, None),
         "can": (17, None), "kwp": (15, None)}
WRITES = {"write": (7, 4), "text": (7, 5), "control": (7, 2), "release": (7, 3)}
# A connect and the first answers of a new QOR come right, so that it is found to be there.
FIRST_AT = 4
BOX = {"text": "Is it all right?", "type": 1}


def late(dice, _):
    return {"delayMs": dice.choice((5, 30, 100, 250, 700))}


def twice(dice, _):
    return {"duplicates": dice.randint(1, 3), "duplicateAfterMs": dice.choice((0, 1, 3, 20, 200))}


def reordered(*_):
    return {"afterNext": True}


def foreign(dice, _):
    return {"answer": dice.choice(("another", "foreignId"))}


def wrong(dice, _):
    return {"answer": dice.choice(("wrongType", "fewerVectors"))}


def missing(dice, _):
    return {"answer": dice.choice(("silent", "ackOnly", "refuse"))}


def slow(dice, _):
    return {"hangMs": dice.choice((1, 10, 60, 250))}


def cut(dice, tcp):
    """By QOR itself; others come from the wire."""
    if not tcp:
        return {"windowAnswer": dice.choice(("inside", "released", "later"))}
    return dice.choice(({"close": "before"}, {"close": "mid"}, {"close": "after"}))


def pieces(dice, tcp):
    if not tcp:
        return {"windowAnswer": dice.choice(("inside", "released", "later"))}
    return dice.choice(({"splitAfterBytes": dice.randint(1, 40), "gapMs": dice.choice((0, 1, 5))},
                        {"mergeWithNext": True}))


KINDS = {"late": late, "twice": twice, "reordered": reordered, "foreign": foreign, "wrong": wrong,
         "missing": missing, "slow": slow, "closed": cut, "pieces": pieces}
# What a QOR that does not tell whose answer it gives may not do without the reader being fooled, whoever reads.
FOOLING = {"twice", "reordered", "foreign"}


def rule(kind, dice, tcp):
    # QOR refuses, or says nothing, to any request; the rest is about answers that bring something.
    targets = {**READS, **WRITES} if kind in ("late", "missing", "slow", "pieces") else READS
    command, operation = targets[dice.choice(sorted(targets))]
    match = {"id": command, "every": dice.randint(FIRST_AT, 12)}
    if operation is not None:
        match["operation"] = operation
    return {"match": match, "action": {"note": kind, **KINDS[kind](dice, tcp)}}


def script(dice, tcp, caption, wrongs):
    """`wrongs`: so many rules; none: a QOR that does nothing wrong."""
    kinds = [dice.choice(sorted(KINDS)) for _ in range(wrongs)]
    made = {"bootstrap": {"durationMs": dice.choice((0, 20, 60)), "steps": 3, "result": -1, "online": True},
            "rules": [rule(kind, dice, tcp) for kind in kinds], "at": []}
    if wrongs and dice.random() < 0.3:
        made["at"].append({"since": "client", "afterMs": dice.randint(600, 1500),
                           "messageBox": {"caption": caption, **BOX}})
    if wrongs and dice.random() < 0.15:
        made["at"].append({"since": "client", "afterMs": dice.randint(700, 1500), "exit": dice.choice((0, 1, 3))})
    return made


def may_fool(made, style):
    return style == "separate" and any(rule["action"]["note"] in FOOLING for rule in made["rules"])
