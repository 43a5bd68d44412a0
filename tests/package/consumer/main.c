#include <PrismoUtl.h>

int main(void) {
  return BitPerPixel(PRISMO_BAYER_RG12) == 16 && ConvImage(0, 0, 0, 0, 0, 1, 1) == 13 ? 0 : 1;
}
