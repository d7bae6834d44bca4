air <- na.omit(read.csv("data/airquality.csv")[c("Wind", "Ozone")])
o <- order(air$Wind); reached <- cumsum(air$Ozone[o]) / sum(air$Ozone)   # no weights in quantile()
sapply(c(1, 2, 3) / 4, function(p) air$Wind[o][which(reached >= p)[1]])
quantile(read.csv("data/airquality.csv")$Wind, c(1, 2, 3) / 4)
