#include "summary.h"

void PlaySummary::print(FILE* out) const {
  fprintf(out, "scrim-play summary\n");
  fprintf(out, "  library:            %s\n", library.c_str());
  fprintf(out, "  input:              %s\n", input.c_str());
  if (!decoding.empty()) fprintf(out, "  decoding:           %s\n", decoding.c_str());
  fprintf(out, "  colour:             %s\n", colour.c_str());
  fprintf(out, "  deinterlace:        %s\n", deinterlace.c_str());
  fprintf(out, "  window:             %s\n", output.c_str());
  fprintf(out, "  pictures presented: %ld\n", presented);
  fprintf(out, "  pictures late:      %ld\n", late);
  fprintf(out, "  pictures dropped:   %ld\n", dropped);
  if (conversionMs.count > 0)
    fprintf(out, "  conversion:         %.3f ms per picture (worst %.3f ms)\n", conversionMs.mean(),
            conversionMs.worst);
  else
    fprintf(out, "  conversion:         not measured\n");
  if (latenessMs.count > 0)
    fprintf(out, "  posting lateness:   mean %.3f ms, worst %.3f ms (posted against entry + delay)\n",
            latenessMs.mean(), latenessMs.worst);
  else
    fprintf(out, "  posting lateness:   nothing was posted\n");
  if (clockMs.count > 0)
    fprintf(out,
            "  against the clock:  mean %.3f ms, worst %.3f ms, earliest %.3f ms (posted against the "
            "picture's time)\n",
            clockMs.mean(), clockMs.worst, clockMs.least);
  fprintf(out, "  PNG files:          %ld in %s\n", pngs, outDir.c_str());
  if (!contactSheet.empty()) fprintf(out, "  contact sheet:      %s\n", contactSheet.c_str());
  if (!problem.empty()) fprintf(out, "  stopped early:      %s\n", problem.c_str());
}
