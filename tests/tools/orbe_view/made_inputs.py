# What recordings and the modelled box put onto the ADC and the TTL inputs: the numbers of generator/RHD_Generator once
# more. Of recordings that are made with seed 1.
MASK = (1 << 64) - 1
RHD_STREAM = 4  # its seed is made from the recording's
HOLD = 600  # samples; the TTL inputs change no sooner
TTL_LINES = 4


def mix(value):
    value = (value + 0x9E3779B97F4A7C15) & MASK
    value = ((value ^ value >> 30) * 0xBF58476D1CE4E5B9) & MASK
    value = ((value ^ value >> 27) * 0x94D049BB133111EB) & MASK
    return value ^ value >> 31


def mix2(seed, position):
    return mix(mix(seed) ^ position)


SEED = mix2(1, RHD_STREAM)


def adc_counts(number, sample):
    """Signed, of an even input: a ramp."""
    random = mix2(SEED, number)
    return (random + sample * (1 + random % 64)) % 65536 - 32768


def ttl(line, sample):
    """The level of one of the four lines that are shown, 0 to 3."""
    hold = sample // HOLD
    while hold > 1 and mix2(SEED + 1, hold) % 2 == 0:
        hold -= 1
    return mix2(SEED + 2, hold) >> (8 + line) & 1 if hold else 0


def ttl_change(line, begin):
    """The first sample behind `begin` at which the line changes."""
    sample = (begin // HOLD + 1) * HOLD
    while ttl(line, sample) == ttl(line, sample - 1):
        sample += HOLD
    return sample
