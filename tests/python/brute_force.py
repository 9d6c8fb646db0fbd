# SPDX-License-Identifier: MIT
"""What tests share: solutions by enumeration."""
import itertools

import koru


def solutions(x, domain, holds):
    """The tuples over the domain, one for each variable, for which a function of them is true."""
    return sorted(values for values in itertools.product(domain, repeat=len(x)) if holds(*values))


def found(model, x):
    """The solutions that a search finds, as sorted tuples; each must be found once."""
    everything = [tuple(s[x]) for s in model.solutions(x)]
    assert len(set(everything)) == len(everything)
    return sorted(everything)


def check(test, n, domain, say, holds):
    """What say(model, variables) posts has the solutions for which holds(*values) is true."""
    model = koru.Model()
    x = model.ints(n, min(domain), max(domain))
    model.post(say(model, x))
    test.assertEqual(found(model, x), solutions(x, domain, holds))
