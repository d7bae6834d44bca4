air <- read.csv("data/airquality.csv")
air$day <- as.Date(sprintf("1973-%d-%d", air$Month, air$Day))
summary(air$Ozone); sd(air$Ozone, na.rm = TRUE)
aggregate(Ozone ~ Month, air, function(x) c(days = length(x), measured = sum(!is.na(x)), ozone = mean(x, na.rm = TRUE)),
          na.action = na.pass)
subset(air, Ozone > 120, c(day, Ozone, Temp))
svg("ozone_by_day.svg"); plot(air$day, air$Ozone, ylab = "ozone, ppb"); dev.off()
