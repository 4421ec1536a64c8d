#include "labelled_file.h"

#include "names.h"

#include <mdtools/file.h>
#include <mdtools/file_output.h>
#include <mdtools/strings.h>

#include <vector>

namespace Girder {

namespace {

using Tools::FileOutput;

constexpr unsigned int Digits = 9;

void writeSupports(const Results& results, FileOutput& output)
{
    std::size_t number = 0;
    for (const SupportResult& support : results.supports) {
        output.write("support", ++number);
        output.write("kind", nameOf(support.kind));
        output.write("x", support.x);
        output.write("reaction", support.reaction);
        output.write("moment", support.moment);
        output.writeLine();
    }
}

void writeList(const char* label, const SpanResult& span, double Station::*member,
               FileOutput& output)
{
    std::vector<double> values;
    for (const Station& station : span.stations)
        values.push_back(station.*member);
    output.write(label, values.data(), values.size());
}

void writeSpans(const Results& results, FileOutput& output)
{
    std::size_t number = 0;
    for (const SpanResult& span : results.spans) {
        output.write("span", ++number);
        output.write("start", span.start);
        output.write("length", span.length);
        output.write("greatest moment", span.greatestMoment);
        if (span.capacity > 0.0)
            output.write("capacity", span.capacity);
        output.write("stations", span.stations.size());
        writeList("x", span, &Station::x, output);
        writeList("moment", span, &Station::moment, output);
        writeList("shear", span, &Station::shear, output);
        writeList("deflection", span, &Station::deflection, output);
        output.writeLine();
    }
}

void writeExtreme(const char* name, const Extreme& extreme, FileOutput& output)
{
    output.write("extreme", name);
    output.write("value", extreme.value);
    output.write("span", extreme.span + 1);
    output.write("x", extreme.position);
    output.writeLine();
}

void writeExtremes(const Extremes& extremes, FileOutput& output)
{
    writeExtreme("minimum moment", extremes.moment.minimum(), output);
    writeExtreme("maximum moment", extremes.moment.maximum(), output);
    writeExtreme("minimum shear", extremes.shear.minimum(), output);
    writeExtreme("maximum shear", extremes.shear.maximum(), output);
    writeExtreme("minimum deflection", extremes.deflection.minimum(), output);
    writeExtreme("maximum deflection", extremes.deflection.maximum(), output);
}

}

bool writeLabelledResults(const Results& results, const std::string& file)
{
    // The writer does not report failures, so an older file must not pass for the new one.
    Tools::File::remove(file);
    {
        FileOutput output(file);
        output.setPrecision(Digits);
        // Texts have no escapes in such files.
        output.write("title", Tools::replaceAny(results.title, "\"\n\r", '\''));
        output.writeLine();
        writeSupports(results, output);
        writeSpans(results, output);
        writeExtremes(results.extremes, output);
    }
    return !Tools::File::isEmpty(file);
}

}
