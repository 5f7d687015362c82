// SPDX-License-Identifier: MIT
#ifndef VEXO_REGION_OPERATIONS_H_
#define VEXO_REGION_OPERATIONS_H_

#include "region/region.h"

namespace vexo {

void threshold(unsigned char* image, int width, int height, int min, int max,
               region* result);
void threshold_y(unsigned char* image, int width, int height, int min, int max,
                 region* result);
void threshold_y3(unsigned char* image, int width, int height, int min, int max,
                  region* result);

int connection(region& input, region* result, int neighbourhood);
int connection_y(const region& input, region* result, int neighbourhood);
int connection2(region& input, region* result, int neighbourhood);

void fill_up(region& input, region* result);
void fill_up_y(const region& input, region* result);
void fill_up_y2(const region& input, region* result);

void union2(region& first, region& second, region* result);
void difference(region& first, region& second, region* result);
void intersection(region& first, region& second, region* result);
void union2_y(region& first, region& second, region* result);
void difference_y(region& first, region& second, region* result);
void intersection_y(region& first, region& second, region* result);

void sort_y(int* rows, int* col_begins, int* col_ends, int n);

void gen_se_circle(int radius, region* element);
void gen_se_rectangle(int width, int height, region* element);
void gen_se_cross(int width, int height, region* element);

void dilation1(region& source, region& element, region* output);
void erosion1(region& source, region& element, region* output);
void dilation2(const region& source, const region& element, region* output,
               int ref_col, int ref_row);
void erosion2(const region& source, const region& element, region* output,
              int ref_col, int ref_row);

void opening(const region& source, const region& element, region* output);
void opening1(region& source, region& element, region* output);
void closing(const region& source, const region& element, region* output);
void top_hat(const region& source, const region& element, region* output);
void bottom_hat(const region& source, const region& element, region* output);

void boundary(const region& source, region* output, const char* type);

void compute_features(region* r);

}  // namespace vexo

#endif  // VEXO_REGION_OPERATIONS_H_
