"""The code samples of tests/README.md stand in the tests that they name, line by line."""

from pages import ROOT, page, report


def stripped(text):
    return [line.strip() for line in text.strip().split('\n')]


def main():
    errors = []
    samples = [sample for sample in page('tests/README.md').samples
               if sample.language == 'cpp' or 'from' in sample.attributes]
    for sample in samples:
        name = sample.attributes.get('from', '')
        lines = stripped(sample.text)
        source = stripped((ROOT / name).read_text(encoding='utf-8')) if name else []
        if not any(source[at:at + len(lines)] == lines for at in range(len(source))):
            errors.append(f'{sample.place}: these lines are not in {name or "a file: it needs from=<file>"}')
    if len(samples) < 5:
        errors.append('tests/README.md has too few samples')
    report(errors, f'{len(samples)} samples')


main()
